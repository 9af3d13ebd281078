// How a join compares its keys: their types, and the grouping.

#include <algorithm>

#include "algebra/ArrayGrouping.h"
#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/ConcurrentHashGrouping.h"
#include "algebra/ConstantExp.h"
#include "algebra/FetchGrouping.h"
#include "algebra/FlowTable.h"
#include "algebra/ForcedGrouping.h"
#include "algebra/HashGrouping.h"
#include "algebra/Join.h"
#include "algebra/LeafTable.h"
#include "algebra/MergeGrouping.h"
#include "algebra/PerfectHashGrouping.h"
#include "algebra/Project.h"
#include "algebra/RadixGrouping.h"
#include "algebra/Scan.h"
#include "algebra/SharedJoinGrouping.h"
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

// The one key column of an outer flow, to be looked up as it is.
RefCntPtr<Exp> ResolveKeyColumn(const Namespace& input, const std::vector<std::wstring>& keys) {
    if (keys.size() != 1) return nullptr;
    const RefCntPtr<Column> column = input.DescribeColumn(keys.front());
    return column->GetStorageName() == Column::storageCol ? MakeRef<ColumnExp>(column) : nullptr;
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
        // Of joins that share the inner table, the first alone reads its keys.
        if (!m_shared || m_shared->GetSize() == 0) m_keyTable->Build(pageSize);
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
    m_shared.reset();
    m_grouping = std::move(grouping);
    if (!m_grouping) return;
    if (m_grouping->GetSemantics() != m_semantics) {
        throw QVE_InvalidArgument(status::Join_SetGrouping, "Join::SetGrouping: other semantics of nulls");
    }
    m_shared = DynamicPtrCast<SharedJoinGrouping>(m_grouping);
    if (m_grouping->NameId() != GroupingIdType::sharedJoin) DescribeGrouping();
}

void Join::DescribeGrouping() const {
    if (VQLEvaluatorSettings::GetDefaultDescribeExecution()) LogEntry() << "JOIN " << m_grouping->GetName();
}

bool Join::ComparesCells(GroupingIdType strategy) {
    return strategy == GroupingIdType::hash || strategy == GroupingIdType::concurrentHash;
}

RefCntPtr<Grouping> Join::MakeGrouping(GroupingIdType strategy, unsigned size) const {
    using Resolve = RefCntPtr<Exp> (*)(const Namespace&, const std::vector<std::wstring>&);
    if (m_keys.empty()) return strategy == GroupingIdType::none ? MakeRef<Grouping>(m_semantics) : nullptr;
    // A strategy of the classes that compare nothing; where the cells of dictionaries do not stand for the values of
    // both sides, there is none.
    const auto both = [this](Resolve outer, Resolve inner, auto make) -> RefCntPtr<Grouping> {
        const RefCntPtr<Exp> probe = AreCellsAlike() ? outer(*m_outer, m_outerKeys) : nullptr;
        const RefCntPtr<Exp> build = probe ? inner(*m_keyTable, m_innerKeys) : nullptr;
        return build ? make(probe, build) : nullptr;
    };
    switch (strategy) {
        case GroupingIdType::fetch:
            return both(ResolveKeyColumn, FetchGrouping::ResolveHash, [this](const auto& probe, const auto& build) {
                return MakeRef<FetchGrouping>(m_semantics, probe, build);
            });
        case GroupingIdType::merge: {
            NamePairs pairs;
            for (size_t i = 0; i < m_outerKeys.size(); ++i) pairs.emplace_back(m_outerKeys[i], m_innerKeys[i]);
            const auto conditions = MergeGrouping::ResolveMerge(*m_outer, *m_keyTable, pairs);
            return conditions.empty() ? nullptr : MakeRef<MergeGrouping>(m_semantics, conditions);
        }
        case GroupingIdType::radix:
            return both(RadixGrouping::ResolveHash, RadixGrouping::ResolveHash,
                        [this](const auto& probe, const auto& build) {
                            return MakeRef<RadixGrouping>(m_semantics, probe, build);
                        });
        case GroupingIdType::array:
            if (m_keys.size() > 1 || !AreCellsAlike()) return nullptr;
            return ArrayGrouping::ResolveJoin(*m_outer, m_outerKeys[0], *m_keyTable, m_innerKeys[0], m_semantics);
        case GroupingIdType::perfectHash:
            return both(PerfectHashGrouping::ResolveHash, PerfectHashGrouping::ResolveHash,
                        [&](const auto& probe, const auto& build) {
                            return MakeRef<PerfectHashGrouping>(m_semantics, probe, build, size);
                        });
        case GroupingIdType::perfectConcurrentHash:
            return both(PerfectHashGrouping::ResolveHash, PerfectHashGrouping::ResolveHash,
                        [this](const auto& probe, const auto& build) {
                            return MakeRef<PerfectConcurrentHashGrouping>(m_semantics, probe, build, m_outerKeys,
                                                                          m_innerKeys);
                        });
        case GroupingIdType::hash:
        case GroupingIdType::concurrentHash: {
            const bool tokens = AreCellsAlike();
            const RefCntPtr<Exp> probe = HashGrouping::ResolveHash(*m_outer, m_outerKeys, tokens);
            const RefCntPtr<Exp> build = HashGrouping::ResolveHash(*m_keyTable, m_innerKeys, tokens);
            if (!probe || !build) return nullptr;
            if (strategy == GroupingIdType::hash) {
                return MakeRef<HashGrouping>(m_semantics, probe, build, m_outerKeys, m_innerKeys, size);
            }
            return MakeRef<ConcurrentHashGrouping>(m_semantics, probe, build, m_outerKeys, m_innerKeys, tokens);
        }
        default:
            return nullptr;
    }
}

std::vector<GroupingIdType> Join::Strategies() const {
    if (m_keys.empty()) return {GroupingIdType::none};
    std::vector<GroupingIdType> strategies = {GroupingIdType::fetch};
    if (VQLEvaluatorSettings::GetUseMergeGrouping()) strategies.push_back(GroupingIdType::merge);
    strategies.push_back(GroupingIdType::radix);
    strategies.push_back(GroupingIdType::array);
    const bool parallel = VQLEvaluatorSettings::GetUseParallelHashing();
    strategies.push_back(parallel ? GroupingIdType::perfectConcurrentHash : GroupingIdType::perfectHash);
    strategies.push_back(parallel ? GroupingIdType::concurrentHash : GroupingIdType::hash);
    return ForcedGrouping::Order(std::move(strategies));
}

Join::LoadedGrouping Join::LoadGrouping(unsigned pageSize) const {
    RefCntPtr<Table> copies;
    for (const GroupingIdType strategy : Strategies()) {
        const RefCntPtr<Grouping> grouping = MakeGrouping(strategy, static_cast<unsigned>(m_innerCount));
        if (!grouping) continue;
        const bool copied = ComparesCells(strategy) || grouping->CanHashInnerConcurrently();
        if (copied && !copies) copies = CopyKeys();
        const RefCntPtr<Table>& keys = copied ? copies : m_keyTable;
        if (grouping->HashInner(m_keyTable, *keys, m_innerKeys, pageSize, m_progress.get())) return {grouping, keys};
    }
    throw QVE_InvalidArgument(status::Join_ChooseGrouping, "Join::ChooseGrouping: could not resolve hash function");
}

void Join::ChooseGrouping(unsigned pageSize) {
    if (m_shared) {
        m_shared->BudgetInner(m_inner, pageSize);
        m_keyCells = m_shared->GetKeyCells();
        DescribeGrouping();
    } else {
        LoadedGrouping loaded = LoadGrouping(pageSize);
        SetGrouping(std::move(loaded.grouping));
        m_keyCells = std::move(loaded.keys);
    }
    m_context = m_grouping->MakeContext(m_outer.get(), m_keyCells.get());
}

// Whether cells of both sides are of one kind: none is a token.
bool Join::AreCellsAlike() const {
    return std::none_of(m_innerKeys.begin(), m_innerKeys.end(),
                        [this](const std::wstring& name) { return m_keyTable->DescribeColumn(name)->IsCompressed(); });
}

}  // namespace qve
