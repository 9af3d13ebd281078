// How an aggregation groups its keys.

#include <algorithm>

#include "algebra/Aggr.h"
#include "algebra/ArrayGrouping.h"
#include "algebra/FetchGrouping.h"
#include "algebra/ForcedGrouping.h"
#include "algebra/GroupPartition.h"
#include "algebra/HashGrouping.h"
#include "algebra/PerfectHashGrouping.h"
#include "algebra/RadixGrouping.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

constexpr CompareSemantics semantics = CompareSemantics::nullsMatch;

}  // namespace

// A key of one value for all rows separates nothing.
std::vector<std::wstring> Aggr::SeparatingKeys() const {
    std::vector<std::wstring> keys;
    for (const std::wstring& key : m_keyNames) {
        if (m_source->GetColumn(key)->GetStorageName() != Column::storageVal) keys.push_back(key);
    }
    return keys;
}

RefCntPtr<Grouping> Aggr::MakeGrouping(GroupingIdType strategy, const std::vector<std::wstring>& keys) const {
    switch (strategy) {
        case GroupingIdType::fetch: {
            const RefCntPtr<Exp> key = FetchGrouping::ResolvePartition(*m_source, keys);
            return key ? MakeRef<FetchGrouping>(semantics, key, key) : nullptr;
        }
        case GroupingIdType::radix: {
            const RefCntPtr<Exp> key = RadixGrouping::ResolveHash(*m_source, keys);
            return key ? MakeRef<RadixGrouping>(semantics, key, key) : nullptr;
        }
        case GroupingIdType::array:
            return keys.size() == 1 ? ArrayGrouping::Resolve(*m_source, keys.front(), semantics) : nullptr;
        case GroupingIdType::perfectHash: {
            const RefCntPtr<Exp> key = PerfectHashGrouping::ResolveHash(*m_source, keys);
            return key ? MakeRef<PerfectHashGrouping>(semantics, key, key, m_estimate) : nullptr;
        }
        case GroupingIdType::hash: {
            const RefCntPtr<Exp> hash = HashGrouping::ResolveHash(*m_source, keys);
            return hash ? MakeRef<HashGrouping>(semantics, hash, hash, keys, FirstTableSize()) : nullptr;
        }
        default:
            return nullptr;
    }
}

RefCntPtr<Grouping> Aggr::ChooseGrouping() const {
    const std::vector<std::wstring> keys = SeparatingKeys();
    if (keys.empty()) return MakeRef<Grouping>(semantics);
    for (const GroupingIdType strategy :
         ForcedGrouping::Order({GroupingIdType::fetch, GroupingIdType::radix, GroupingIdType::array,
                                GroupingIdType::perfectHash, GroupingIdType::hash})) {
        if (RefCntPtr<Grouping> grouping = MakeGrouping(strategy, keys)) return grouping;
    }
    throw QVE_InvalidArgument(status::Aggr_ComputeGrouping, "Aggr::ComputeGrouping: could not resolve hash function");
}

// The keys are one column, whose range has become too wide for an array.
void Aggr::ReplaceByHash() {
    const auto key = std::find_if(m_keys.begin(), m_keys.end(), [](const CellCopier& copier) {
        return copier.GetFrom()->GetStorageName() != Column::storageVal;
    });
    const std::vector<std::wstring> names = {key->GetTo()->GetName()};
    const unsigned expected = std::max(FirstTableSize(), 2 * m_groupCount);
    if (const RefCntPtr<Exp> packed = PerfectHashGrouping::ResolveHash(*m_source, names)) {
        const auto grouping = MakeRef<PerfectHashGrouping>(semantics, packed, packed, expected);
        grouping->AdoptGroups(*key->GetTo(), m_groupCount);
        return SetGrouping(grouping);
    }
    const RefCntPtr<Exp> hash = HashGrouping::ResolveHash(*m_source, names);
    if (!hash) {
        throw QVE_InvalidArgument(status::Aggr_ComputeGrouping,
                                  "Aggr::ComputeGrouping: could not resolve hash function");
    }
    const auto grouping = MakeRef<HashGrouping>(semantics, hash, hash, names, expected);
    grouping->AdoptGroups(*key->GetTo(), m_groupCount);
    SetGrouping(grouping);
}

}  // namespace qve
