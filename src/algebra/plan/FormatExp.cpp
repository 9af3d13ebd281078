#include "algebra/plan/FormatExp.h"

#include "algebra/BooleanExp.h"
#include "algebra/CaseExp.h"
#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/CompressExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/DataExp.h"
#include "algebra/ExpandExp.h"
#include "algebra/HashExp.h"
#include "algebra/LiteralAtom.h"
#include "algebra/LookupExp.h"
#include "algebra/Namespace.h"
#include "algebra/PartitionExp.h"
#include "algebra/Table.h"
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
        return Call(op, exp, m_context == ContextType::select ? ContextType::select : ContextType::map);
    }
    // A computed bit column where rows are to be selected.
    const bool mapped = m_context == ContextType::select && exp.GetClass() == primitive::klassMap;
    if (mapped) m_text += L"(map ";
    Call(op, exp, ContextType::map);
    if (mapped) m_text += L")";
}

void FormatExp::VisitCompressExp(CompressExp& exp) {
    Call(L"compress", exp, ContextType::map);
}
void FormatExp::VisitExpandExp(ExpandExp& exp) {
    Call(L"expand", exp, ContextType::map);
}
void FormatExp::VisitPartitionExp(PartitionExp& exp) {
    Call(L"partition", exp, ContextType::map);
}

// The links of the chain, first to last.
void FormatExp::VisitHashExp(HashExp& exp) {
    std::wstring links;
    for (const HashExp* link = &exp; link; link = link->GetPrevious().get()) {
        links = L" (" + link->GetOperation() + (link->AllowsTokens() ? L" tokens " : L" values ") +
                Do(ContextType::map, link->GetArguments()[0]) + L")" + links;
    }
    m_text += L"(hashes" + links + L")";
}

// The keys, the types of the key columns, what is not found, and the rows of the table.
void FormatExp::VisitLookupExp(LookupExp& exp) {
    Table& table = *exp.GetTable();
    const uint64_t rows = table.Build(Namespace::s_blockLength);
    const std::vector<std::wstring>& names = exp.GetTableColumns();
    m_text += L"(lookup (";
    for (size_t key = 0; key + 1 < names.size(); ++key) {
        m_text += (key ? L" " : L"") + Do(ContextType::map, exp.GetArguments()[key]);
    }
    m_text += L") (";
    std::vector<RefCntPtr<Column>> columns;
    for (const std::wstring& name : names) columns.push_back(table.GetColumn(name));
    for (size_t key = 0; key + 1 < columns.size(); ++key) {
        if (key) m_text += L' ';
        FormatAtom(columns[key]->GetType()->null());
    }
    m_text += L") ";
    const usrtype& type = *columns.back()->GetType();
    usratom otherwise(&type);
    if (!exp.GetOtherwise().isnull()) type.cast(otherwise, exp.GetOtherwise());
    FormatAtom(otherwise.isnull() ? type.null() : otherwise);
    for (uint64_t row = 0; row < rows; ++row) {
        m_text += L" (";
        for (const RefCntPtr<Column>& column : columns) {
            if (column != columns.front()) m_text += L' ';
            column->Seek(table.GetStart() + row, 1);
            usratom cell;
            column->GetType()->get(column->GetInput(0), 0, cell);
            // Read again, a cell takes the type of its column.
            const VQLDataValue value = LiteralOfAtom(cell);
            if (value.IsNull()) {
                FormatAtom(cell);
            } else {
                m_text += FormatDataValue(value);
            }
        }
        m_text += L")";
    }
    m_text += L")";
}

}  // namespace qve
