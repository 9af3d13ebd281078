// How a join compares its keys: their types, and the grouping.

#include <algorithm>

#include "algebra/ArrayGrouping.h"
#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/FlowTable.h"
#include "algebra/HashGrouping.h"
#include "algebra/Join.h"
#include "algebra/LeafTable.h"
#include "algebra/Project.h"
#include "algebra/RadixGrouping.h"
#include "algebra/Scan.h"
#include "algebra/status.h"
#include "primitives/primitive.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"
#include "types/usrtype.h"
#include "types/varchar.h"
#include "vql/syntax/VQLEvaluatorSettings.h"

namespace qve {

namespace {

bool IsWhole(const Column& column) {
    return column.GetDataType() == DataType::integer || column.GetDataType() == DataType::index;
}

// Texts that compare as they are, whatever length they may have.
bool AreTextsAlike(const usrtype& outer, const usrtype& inner) {
    return outer.GetDataType() == DataType::usr && inner.GetDataType() == DataType::usr &&
           outer.collation() == inner.collation() && outer.scale() == inner.scale();
}

// The type in which the values of both columns can be told apart; null when there is none.
const usrtype* CommonType(const Column& outer, const Column& inner) {
    if (outer.IsCompressed() || inner.IsCompressed()) {
        // A dictionary of plain values takes no others.
        if (!outer.IsCompressed() || !inner.IsCompressed() || outer.GetDataType() != inner.GetDataType()) {
            return nullptr;
        }
        const std::vector<const usrtype*> types = {outer.GetType(), inner.GetType()};
        return outer.GetDataType() == DataType::usr ? varchar::maxtype(types.begin(), types.end()) : outer.GetType();
    }
    if (outer.GetType() == inner.GetType()) return outer.GetType();
    if (IsWhole(outer) && IsWhole(inner)) return usrtype::resolve(primitive::primitive_props(L"bigint"));
    if (outer.GetDataType() == DataType::real && inner.GetDataType() == DataType::real) {
        return usrtype::resolve(primitive::primitive_props(L"double"));
    }
    return nullptr;
}

// The name of the column to compare: that of the column itself, or of a cast that is added to `casts`.
std::wstring AddCast(const std::wstring& name, const Column& column, const usrtype& type, unsigned ordinal,
                     std::vector<RefCntPtr<Exp>>& casts) {
    if (column.GetType() == &type) return name;
    std::wstring key = L".KEY" + std::to_wstring(ordinal);
    casts.push_back(MakeRef<CastExp>(key, MakeRef<ColumnExp>(name), MakeRef<ConstantExp>(type.null())));
    return key;
}

RefCntPtr<Column> CopyColumn(Column& column, uint64_t start, uint64_t count, const ProgressCallback* progress) {
    usrprops properties = column.GetProperties();
    for (const usrpropkey key : {usrpropkey::encoding, usrpropkey::storagetype}) properties.erase(key);
    const WholeColumn cells(column, start, count, progress);
    const auto data = MakeRef<TempFileDataStream>();
    if (count > 0) data->Append(cells.GetInput().data, count * cells.GetInput().width);
    return MakeRef<Column>(std::move(properties), data, column.GetDict());
}

}  // namespace

void Join::CastColumn(const std::wstring& outer, const std::wstring& inner, unsigned ordinal) {
    const RefCntPtr<Column> outerKey = m_source->GetColumn(outer);
    const RefCntPtr<Column> innerKey = m_inner->GetColumn(inner);
    if (AreTextsAlike(*outerKey->GetType(), *innerKey->GetType())) {
        m_outerKeys.push_back(outer);
        m_innerKeys.push_back(inner);
        return;
    }
    const usrtype* type = CommonType(*outerKey, *innerKey);
    if (!type) {
        throw QVE_InvalidArgument(status::Join_CastColumn, "Join::CastColumn: Incompatible join types");
    }
    m_outerKeys.push_back(AddCast(outer, *outerKey, *type, ordinal, m_outerCasts));
    m_innerKeys.push_back(AddCast(inner, *innerKey, *type, ordinal, m_innerCasts));
}

void Join::EnforceCompatibility(unsigned pageSize) {
    for (unsigned i = 0; i < m_keys.size(); ++i) CastColumn(m_keys[i].first, m_keys[i].second, i);
    m_outer = m_outerCasts.empty() ? m_source : RefCntPtr<DataFlow>(MakeRef<Project>(m_source, m_outerCasts));
    m_keyTable = m_inner;
    if (!m_innerCasts.empty()) {
        ColumnNames names;
        for (const auto& [outer, inner] : m_keys) names.insert(inner);
        const auto cast = MakeRef<Project>(MakeRef<Scan>(m_inner, names), m_innerCasts);
        m_keyTable = MakeRef<FlowTable>(cast, 0);
        m_keyTable->Build(pageSize);
    }
    const bool enforced = !m_outerCasts.empty() || !m_innerCasts.empty();
    if (enforced && VQLEvaluatorSettings::GetDefaultDescribeExecution()) LogEntry() << "JOIN Enforced";
}

// The inner key columns, whole and plain; in a file where they are large.
RefCntPtr<Table> Join::CopyKeys() const {
    ColumnMap columns;
    for (const std::wstring& name : m_innerKeys) {
        columns[name] =
            CopyColumn(*m_keyTable->GetColumn(name), m_keyTable->GetStart(), m_innerCount, m_progress.get());
    }
    return MakeRef<LeafTable>(L".KEYS", std::move(columns));
}

void Join::SetGrouping(RefCntPtr<Grouping> grouping) {
    m_context.reset();
    m_grouping = std::move(grouping);
    if (!m_grouping) return;
    if (m_grouping->GetSemantics() != m_semantics) {
        throw QVE_InvalidArgument(status::Join_SetGrouping, "Join::SetGrouping: other semantics of nulls");
    }
    if (VQLEvaluatorSettings::GetDefaultDescribeExecution()) LogEntry() << "JOIN " << m_grouping->GetName();
}

bool Join::TryGrouping(RefCntPtr<Grouping> grouping, const RefCntPtr<Table>& keys, unsigned pageSize) {
    if (!grouping || !grouping->HashInner(m_keyTable, *keys, m_innerKeys, pageSize, m_progress.get())) return false;
    SetGrouping(std::move(grouping));
    m_keyCells = keys;
    m_context = m_grouping->MakeContext(m_outer.get(), m_keyCells.get());
    return true;
}

void Join::ChooseGrouping(unsigned pageSize) {
    if (m_keys.empty()) {
        TryGrouping(MakeRef<Grouping>(m_semantics), m_keyTable, pageSize);
        return;
    }
    const bool plain = std::none_of(m_innerKeys.begin(), m_innerKeys.end(), [this](const std::wstring& name) {
        return m_keyTable->DescribeColumn(name)->IsCompressed();
    });
    if (plain) {
        const RefCntPtr<Exp> probe = RadixGrouping::ResolveHash(*m_outer, m_outerKeys);
        const RefCntPtr<Exp> build = probe ? RadixGrouping::ResolveHash(*m_keyTable, m_innerKeys) : nullptr;
        if (build && TryGrouping(MakeRef<RadixGrouping>(m_semantics, probe, build), m_keyTable, pageSize)) return;
        if (m_keys.size() == 1 &&
            TryGrouping(ArrayGrouping::ResolveJoin(*m_outer, m_outerKeys[0], *m_keyTable, m_innerKeys[0], m_semantics),
                        m_keyTable, pageSize)) {
            return;
        }
    }
    const RefCntPtr<Exp> probe = HashGrouping::ResolveHash(*m_outer, m_outerKeys, plain);
    const RefCntPtr<Exp> build = HashGrouping::ResolveHash(*m_keyTable, m_innerKeys, plain);
    if (!probe || !build ||
        !TryGrouping(MakeRef<HashGrouping>(m_semantics, probe, build, m_outerKeys, m_innerKeys,
                                           static_cast<unsigned>(m_innerCount)),
                     CopyKeys(), pageSize)) {
        throw QVE_InvalidArgument(status::Join_ChooseGrouping, "Join::ChooseGrouping: could not resolve hash function");
    }
}

}  // namespace qve
