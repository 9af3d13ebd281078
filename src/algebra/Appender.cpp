#include "algebra/Appender.h"

#include <algorithm>
#include <cstring>

#include "algebra/Append.h"
#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/MapExp.h"
#include "algebra/TokenTranslator.h"
#include "algebra/reserve_page.h"
#include "algebra/status.h"
#include "algebra/take_error_counts.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/varchar.h"

namespace qve {

namespace {

/// Types of one kind have a common type of that kind.
enum class Kind { boolean, number, day, duration, text, spatial };

Kind KindOf(const usrtype& type) {
    switch (type.GetDataType()) {
        case DataType::boolean:
            return Kind::boolean;
        case DataType::index:
        case DataType::integer:
        case DataType::real:
            return Kind::number;
        case DataType::date:
        case DataType::datetime:
            return Kind::day;
        case DataType::duration:
            return Kind::duration;
        case DataType::usr:
            return Kind::text;
        case DataType::spatial:
            return Kind::spatial;
    }
    return Kind::text;
}

bool SameDictionary(const Column& a, const Column& b) {
    const RefCntPtr<DataStream>& left = a.GetDict();
    const RefCntPtr<DataStream>& right = b.GetDict();
    if (!left || !right || a.GetTokenSize() != b.GetTokenSize()) return false;
    return left == right || (left->GetGuid() == right->GetGuid() && left->GetSize() == right->GetSize());
}

}  // namespace

Appender::Appender(std::wstring name, std::vector<Input> inputs) : m_name(std::move(name)) {
    std::vector<RefCntPtr<Column>> columns;
    for (const Input& input : inputs) columns.push_back(input.flow->DescribeColumn(input.column));
    const usrtype& type = *ReconcileTypes(columns);
    m_description = MakeRef<Column>(ReconcileProperties(type, columns));
    for (size_t i = 0; i < inputs.size(); ++i) {
        m_sources.push_back({inputs[i].flow, inputs[i].column, Widen(inputs[i].column, *columns[i], type), nullptr});
    }
}

Appender::~Appender() = default;

const usrtype* Appender::ReconcileTypes(const std::vector<RefCntPtr<Column>>& columns) const {
    const usrtype* common = columns[0]->GetType();
    for (const RefCntPtr<Column>& column : columns) {
        const usrtype* other = column->GetType();
        if (other == common) continue;
        const Kind kind = KindOf(*common), otherKind = KindOf(*other);
        if (kind == otherKind && kind != Kind::spatial) {
            common = CommonType(common->properties(), other->properties());
        } else if (kind == Kind::spatial || otherKind == Kind::spatial) {
            throw QVE_InvalidArgument(status::Append_types,
                                      narrow(L"Append: the types of column [" + m_name + L"] have nothing in common: " +
                                             common->name() + L", " + other->name()));
        } else if (kind != Kind::text) {
            // The text of any value is short beside a text of no limit, and keeps the text's order.
            common = otherKind == Kind::text ? other : varchar::usrtypeof(varchar::clob_precision, 1);
        }
    }
    return common;
}

// Only what stays true when rows are added.
usrprops Appender::ReconcileProperties(const usrtype& type, const std::vector<RefCntPtr<Column>>& columns) const {
    const usrprops& outer = columns[0]->GetProperties();
    usrprops properties = type.properties();
    properties.set(usrpropkey::name, m_name);
    for (const usrpropkey key :
         {usrpropkey::ordinal, usrpropkey::primary_key, usrpropkey::default_value, usrpropkey::family_name}) {
        if (const std::wstring* kept = outer.get(key)) properties.set(key, *kept);
    }
    if (std::all_of(columns.begin(), columns.end(),
                    [](const auto& column) { return column->HasProperty(usrpropkey::not_null); })) {
        properties.set(usrpropkey::not_null, true);
    }
    if (!type.fixed()) {
        properties.set(usrpropkey::compression, L"heap");
        properties.set(usrpropkey::storagewidth, L"8");
        properties.set(usrpropkey::distinct, true);
    }
    return properties;
}

RefCntPtr<Exp> Appender::Widen(const std::wstring& name, const Column& column, const usrtype& type) {
    RefCntPtr<Exp> exp = MakeRef<ColumnExp>(name);
    if (column.GetType() == &type) return exp;
    if (type.fixed()) return MakeRef<CastExp>(name, exp, MakeRef<ConstantExp>(type.null()));
    return column.GetType()->fixed() ? MakeRef<MapUnaryExp>(name, L"to_str", exp, false) : exp;
}

bool Appender::SharesDictionary() const {
    const Column& first = *m_sources[0].exp->GetColumn();
    // Consumers may have been bound to the tokens as they were described.
    if (first.GetType() != m_description->GetType() || first.GetTokenSize() != m_description->GetTokenSize()) {
        return false;
    }
    return std::all_of(m_sources.begin(), m_sources.end(), [&](const Source& source) {
        const Column& column = *source.exp->GetColumn();
        return column.GetType() == first.GetType() && SameDictionary(column, first) && !column.GetDict()->CanExtend();
    });
}

void Appender::TakeErrors(size_t index, uint64_t firstRow) {
    const Source& source = m_sources[index];
    AddErrorCounts(*source.flow->GetColumn(source.column), firstRow, *m_target);
}

void Appender::ForgetErrors() {
    for (const usrpropkey key : {usrpropkey::count_errors, usrpropkey::first_error, usrpropkey::last_error}) {
        m_target->ClearProperty(key);
    }
}

RefCntPtr<Column> Appender::Load() {
    if (m_target) return m_target;
    for (const Source& source : m_sources) source.exp->AllocateColumn(source.flow);
    usrprops properties = m_description->GetProperties();
    RefCntPtr<DataStream> dictionary;
    if (m_description->IsCompressed()) {
        const Column& first = *m_sources[0].exp->GetColumn();
        m_shared = SharesDictionary();
        dictionary = m_shared ? first.GetDict() : MakeRef<TempFileDataStream>();
        if (m_shared) {
            properties.set(usrpropkey::storagewidth, std::to_wstring(first.GetTokenSize()));
            for (const usrpropkey key : {usrpropkey::distinct, usrpropkey::comparable, usrpropkey::compression}) {
                properties.erase(key);
                if (const std::wstring* kept = first.GetProperties().get(key)) properties.set(key, *kept);
            }
        } else if (Append::GetUseHeapMerger()) {
            for (Source& source : m_sources) source.translator = std::make_unique<TokenTranslator>(8);
        }
    }
    m_target = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>(), std::move(dictionary));
    return m_target;
}

void Appender::Evaluate(size_t index, unsigned count, unsigned extent, const unsigned* selection) {
    const Source& source = m_sources[index];
    source.exp->Evaluate(count, extent, selection, source.flow);
    const Column& from = *source.exp->GetColumn();
    const input_column in = source.exp->GetResult();
    const output_column out = reserve_page(*m_target, extent);
    if (m_shared && !SameDictionary(from, *m_target)) {
        throw QVE_LogicError(status::Append_state, "Append: invalid appender state");
    }
    const bool cells = m_shared || (!m_target->IsCompressed() && !from.IsCompressed());
    if (from.GetStorageName() == Column::storageVal || (!cells && !source.translator)) {
        CopyValues(count, selection, from, in, out);
    } else if (cells) {
        // The rows between those that are selected are copied along: it costs less than to leave them out. Where none
        // is selected, the source may have no cells.
        const unsigned end = count == 0 ? 0 : selection ? selection[count - 1] + 1 : count;
        std::memcpy(out.data, in.data, end * out.width);
    } else {
        source.translator->Translate(count, selection, from, in, *m_target, out);
    }
    *out.flags = static_cast<unsigned char>(m_target->HasProperty(usrpropkey::not_null) ? column_flags::not_null : 0);
}

void Appender::CopyValues(unsigned count, const unsigned* selection, const Column& from, const input_column& in,
                          const output_column& out) const {
    const bool single = from.GetStorageName() == Column::storageVal;
    usratom value;
    for (unsigned k = 0; k < count; ++k) {
        const unsigned row = selection ? selection[k] : k;
        from.GetType()->get(in, single ? 0 : row, value);
        m_target->GetType()->put(out, row, value);
    }
}

}  // namespace qve
