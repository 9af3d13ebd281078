#pragma once

#include <string>

#include "algebra/Exp.h"

namespace qve {

/// The values of an expression as tokens of a dictionary of the node's own, which takes each value once, as values come
/// up: of texts a heap, of values of fixed size an array. Equal results have equal tokens.
class CompressExp : public Exp {
public:
    CompressExp(const std::wstring& name, RefCntPtr<Exp> argument);

    void Accept(ExpVisitor& visitor) override;
    /// Raises 40061 for an argument of a type that no dictionary holds.
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

private:
    void MakeColumn();

    bool m_single = false;  // one value for all rows
    bool m_bound = false;
};

}  // namespace qve
