#pragma once

#include <string>
#include <vector>

#include "algebra/Exp.h"

namespace qve {

/// The values of a dictionary column. Those of an array dictionary, whose tokens are ordinals, are copied out of it. A
/// text is its token in a heap, so that the page of a heap column is passed on as it is.
class ExpandExp : public Exp {
public:
    ExpandExp(const std::wstring& name, RefCntPtr<Exp> argument);

    void Accept(ExpVisitor& visitor) override;
    input_column GetResult() const override;
    /// Raises 40162 for an argument without a dictionary.
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    /// Raises QVE_OutOfRange 40163 "ExpandExp::Evaluate token out of range.", but for the token of null.
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

private:
    void MakeColumn();
    template <class Value>
    void Copy(unsigned count, const unsigned* sel, const output_column& out);

    bool m_single = false;  // one value for all rows
    bool m_copies = false;  // out of an array dictionary
    bool m_bound = false;
};

}  // namespace qve
