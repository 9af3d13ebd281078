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

    /// Arguments are of type "bit", or select nodes; with a select node among them only Select can be called. Raises
    /// 40048.
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    /// Rows are passed on from argument to argument as long as they are undecided.
    unsigned Select(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                    const Namespace* input) override;
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

private:
    void MakeColumn();
    bool IsAnd() const { return m_op == opAnd; }
    /// Evaluates an argument for these rows; a constant one only the first time.
    input_column EvaluateArgument(size_t argument, unsigned count, unsigned extent, const unsigned* sel,
                                  const Namespace* input);
    /// Whether the rows pass a constant argument.
    bool ConstantPasses(size_t argument, const Namespace* input);
    unsigned SelectAll(unsigned count, unsigned extent, unsigned* out, const unsigned* sel, const Namespace* input);
    unsigned SelectAny(unsigned count, unsigned extent, unsigned* out, const unsigned* sel, const Namespace* input);

    std::vector<binary_func> m_combiners;    // by argument: the result so far with that argument
    std::vector<unsigned char> m_evaluated;  // by argument, of the constant ones
    std::vector<signed char> m_passes;       // likewise: 1 when true, 0 when not, -1 before it is known
    std::vector<unsigned> m_undecided;
    std::vector<unsigned> m_hits;
    std::vector<unsigned char> m_marks;  // by row of the page: it passes
};

}  // namespace qve
