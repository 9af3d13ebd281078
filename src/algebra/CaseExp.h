#pragma once

#include <memory>
#include <string>
#include <vector>

#include "algebra/Exp.h"

namespace qve {

class DataStream;
class TokenTranslator;

/// Conditional: for each row the value of the first condition that is true, else the last argument, else null. Each
/// condition and each value is computed only for the rows that come to it; where they cost little, all are computed for
/// all rows of a page, without a list of rows.
class CaseExp : public Exp {
public:
    static constexpr const wchar_t* opCase = L"case";

    CaseExp(const std::wstring& name, RefCntPtr<Exp> when, RefCntPtr<Exp> then, RefCntPtr<Exp> otherwise);
    /// Pairs of condition and value, and, if their number is odd, the value of all other rows.
    CaseExp(const std::wstring& name, Arguments arguments);
    ~CaseExp() override;

    void Accept(ExpVisitor& visitor) override;
    std::wstring GetPrimitiveName() const override;
    /// Raises 40050 when a condition is not of type "bit", and what CommonType does.
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

private:
    /// A value and how it comes to the output.
    struct Branch {
        RefCntPtr<Exp> value;
        std::unique_ptr<TokenTranslator> translator;  // null when cells are copied as they are
        bool evaluated = false;                       // a constant value
    };

    void MakeColumn(const Namespace* input);
    void MakeBranches(const Namespace* input);
    /// The dictionary that all values share; null when there are several, or none.
    RefCntPtr<Column> FindSharedDictionary() const;
    void AppendHeap(usrprops properties, const RefCntPtr<DataStream>& dictionary);
    unsigned MeasureTokens(const usrprops& properties, const RefCntPtr<DataStream>& dictionary) const;
    input_column EvaluateCondition(size_t condition, unsigned count, unsigned extent, const unsigned* sel,
                                   const Namespace* input);
    /// False when the tokens of the branch are of another dictionary than this page's.
    bool CopyBranch(Branch& branch, const output_column& out, unsigned count, unsigned extent, const unsigned* sel,
                    const Namespace* input);
    bool EvaluatePage(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input);
    bool CanBlend() const;
    /// Computes all conditions and values for all rows of a page, and puts one over the other. False as above.
    bool EvaluateByBlending(unsigned extent, const Namespace* input);
    void EvaluateBranch(Branch& branch, unsigned count, unsigned extent, const unsigned* sel, const Namespace* input);
    static bool IsWhole(const Branch& branch);
    bool SharesDictionary(const Column& column) const;
    const char* GetNull(char* room) const;
    void UseOwnDictionary();
    void CopyNull(const output_column& out, unsigned count, const unsigned* sel) const;

    std::vector<Branch> m_branches;          // in the order of the arguments; of the last the value may be null: a null
    std::vector<unsigned char> m_evaluated;  // the constant conditions
    std::vector<unsigned> m_hits;
    std::vector<unsigned> m_rest;
    bool m_single = false;
    bool m_blends = false;
    bool m_bound = false;
};

}  // namespace qve
