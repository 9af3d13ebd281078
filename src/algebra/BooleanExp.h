#pragma once

#include <string>
#include <vector>

#include "algebra/PrimitiveExp.h"

namespace qve {

/// And or or of two or more conditions, three-valued. Later arguments are computed only for the rows that the earlier
/// ones leave undecided: those not false for and, not true for or.
class BooleanExp : public PrimitiveExp {
public:
    static constexpr const wchar_t* opAnd = L"and_";
    static constexpr const wchar_t* opOr = L"or_";

    BooleanExp(const std::wstring& name, const std::wstring& op, RefCntPtr<Exp> left, RefCntPtr<Exp> right);
    BooleanExp(const std::wstring& name, const std::wstring& op, Arguments arguments);

    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    /// Of an and whose arguments can be selected by, each narrows what the one before left.
    unsigned Select(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                    const Namespace* input) override;
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

private:
    /// Raises 40048 "BooleanExp::MakeColumn: Non-Boolean argument".
    void MakeColumn();
    bool IsAnd() const { return m_op == opAnd; }
    unsigned Undecided(output_column out, unsigned count, const unsigned* sel);

    unsigned m_nextConstant = 0;
    std::vector<binary_func> m_combiners;  // by argument: result with that argument
    std::vector<unsigned> m_undecided;
    std::vector<bool> m_evaluated;
};

}  // namespace qve
