#pragma once

#include <string>

#include "algebra/ExpVisitor.h"
#include "algebra/plan/ParseNamespace.h"
#include "system/RefCntPtr.h"

namespace qve {

class Exp;
class usratom;

/// Writes an expression in the language of plans, on one line. ExpBuilder reads it.
class FormatExp : public ExpVisitor {
public:
    using ContextType = ParseNamespace::ContextType;

    /// `context` is what the expression is for. Raises 40296 for nodes that have no form.
    static std::wstring Do(ContextType context, const RefCntPtr<Exp>& exp);

private:
    explicit FormatExp(ContextType context) : m_context(context) {}

    void VisitCaseExp(CaseExp& exp) override;
    void VisitCastExp(CastExp& exp) override;
    void VisitColumnExp(ColumnExp& exp) override;
    void VisitCompressExp(CompressExp& exp) override;
    void VisitConstantExp(ConstantExp& exp) override;
    void VisitDataExp(DataExp& exp) override;
    void VisitExpandExp(ExpandExp& exp) override;
    void VisitHashExp(HashExp& exp) override;
    void VisitLookupExp(LookupExp& exp) override;
    void VisitPartitionExp(PartitionExp& exp) override;
    void VisitPrimitiveExp(PrimitiveExp& exp) override;

    void Call(const std::wstring& head, const Exp& exp, ContextType arguments);
    void FormatAtom(const usratom& atom);

    ContextType m_context;
    std::wstring m_text;
};

}  // namespace qve
