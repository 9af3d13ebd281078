#pragma once

#include <string>
#include <vector>

#include "algebra/Exp.h"
#include "primitives/primitive_func.h"

namespace qve {

/// Conditional: for each row the value of the first condition that is true, else the last argument, else null. Each
/// condition and each value is computed only for the rows that come to it.
class CaseExp : public Exp {
public:
    static constexpr const wchar_t* opCase = L"case";

    CaseExp(const std::wstring& name, RefCntPtr<Exp> when, RefCntPtr<Exp> then, RefCntPtr<Exp> otherwise);
    /// Pairs of condition and value, and, if their number is odd, the value of all other rows.
    CaseExp(const std::wstring& name, Arguments arguments);

    void Accept(ExpVisitor& visitor) override;
    std::wstring GetPrimitiveName() const override;
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

private:
    /// Raises 40050 when a condition is not of type "bit", and what ResolveCast does.
    void MakeColumn();
    void MakeDictionary();
    void CopyBranch(size_t branch, output_column out, unsigned count, unsigned extent, const unsigned* sel,
                    const Namespace* input);
    void EvaluateOnce(size_t argument, unsigned count, unsigned extent, const unsigned* sel, const Namespace* input);
    bool HasElse() const { return m_arguments.size() % 2 != 0; }

    std::vector<bool> m_evaluated;  // of the constant arguments, by argument
    std::vector<unsigned> m_hits;
    std::vector<unsigned> m_rest;
    bool m_bound = false;
};

}  // namespace qve
