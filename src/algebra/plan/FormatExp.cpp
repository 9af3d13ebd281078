#include "algebra/plan/FormatExp.h"

#include "algebra/BooleanExp.h"
#include "algebra/CaseExp.h"
#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/DataExp.h"
#include "algebra/LiteralAtom.h"
#include "algebra/plan/absent_operator.h"
#include "algebra/plan/format_properties.h"
#include "storage/Column.h"
#include "types/complete_type.h"
#include "types/usrtype.h"
#include "vql/syntax/FormatDataValue.h"
#include "vql/syntax/VQLIdentifier.h"

namespace qve {
namespace {

// The shortest property set that means a type.
std::wstring FormatType(const usrtype& type) {
    const usrprops whole = type.properties();
    usrprops brief{{usrpropkey::type,
                    std::wstring(whole.has(usrpropkey::builtin) ? whole.text(usrpropkey::builtin) : L"varchar")}};
    for (const usrpropkey detail :
         {usrpropkey::type, usrpropkey::collation, usrpropkey::scale, usrpropkey::precision}) {
        if (detail != usrpropkey::type && whole.has(detail)) brief.set(detail, std::wstring(whole.text(detail)));
        if (usrtype::resolve(complete_type(brief)) == &type) return format_properties(brief);
    }
    return format_properties(whole);
}

}  // namespace

std::wstring FormatExp::Do(ContextType context, const RefCntPtr<Exp>& exp) {
    FormatExp format(context);
    exp->Accept(format);
    return std::move(format.m_text);
}

void FormatExp::Call(const std::wstring& head, const Exp& exp, ContextType arguments) {
    m_text += L"(" + head;
    for (const RefCntPtr<Exp>& argument : exp.GetArguments()) m_text += L" " + Do(arguments, argument);
    m_text += L")";
}

void FormatExp::VisitCaseExp(CaseExp& exp) {
    Call(L"case", exp, ContextType::map);
}
void FormatExp::VisitCastExp(CastExp& exp) {
    Call(L"cast", exp, ContextType::map);
}
void FormatExp::VisitDataExp(DataExp& exp) {
    Call(L"data", exp, ContextType::map);
}
void FormatExp::VisitColumnExp(ColumnExp& exp) {
    m_text += VQLIdentifier::UnquotedName(exp.GetColumnName());
}

void FormatExp::VisitConstantExp(ConstantExp& exp) {
    if (exp.GetValueCount() == 1) return FormatAtom(exp.GetValue());
    m_text += L"(values";
    for (unsigned i = 0; i < exp.GetValueCount(); ++i) {
        m_text += L' ';
        FormatAtom(exp.GetValue(i));
    }
    m_text += L")";
}

// What a plain literal would be read as another type than it has comes with the properties of its type.
void FormatExp::FormatAtom(const usratom& atom) {
    const VQLDataValue value = LiteralOfAtom(atom);
    if (value.IsNull()) {
        m_text += L"(null " + (atom.type() ? FormatType(*atom.type()) : L"()") + L")";
    } else if (AtomOfLiteral(value, {}).type() == atom.type()) {
        m_text += FormatDataValue(value);
    } else {
        m_text += L"(" + FormatDataValue(value) + L" " + FormatType(*atom.type()) + L")";
    }
}

void FormatExp::VisitPrimitiveExp(PrimitiveExp& exp) {
    const std::wstring& op = exp.GetOperation();
    if (op == BooleanExp::opAnd || op == BooleanExp::opOr) {
        return Call(op, exp, op == BooleanExp::opAnd ? m_context : ContextType::map);
    }
    // A computed bit column where rows are to be selected.
    const bool mapped = m_context == ContextType::select && exp.GetClass() == primitive::klassMap;
    if (mapped) m_text += L"(map ";
    Call(op, exp, ContextType::map);
    if (mapped) m_text += L")";
}

void FormatExp::VisitCompressExp(CompressExp&) {
    throw_absent_operator("CompressExp");
}
void FormatExp::VisitExpandExp(ExpandExp&) {
    throw_absent_operator("ExpandExp");
}
void FormatExp::VisitHashExp(HashExp&) {
    throw_absent_operator("HashExp");
}
void FormatExp::VisitLookupExp(LookupExp&) {
    throw_absent_operator("LookupExp");
}
void FormatExp::VisitPartitionExp(PartitionExp&) {
    throw_absent_operator("PartitionExp");
}

}  // namespace qve
