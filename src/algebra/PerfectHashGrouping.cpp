#include "algebra/PerfectHashGrouping.h"

#include <algorithm>

#include "algebra/packed_keys.h"
#include "storage/Column.h"
#include "types/cuckoo_hash.h"

namespace qve {

PerfectHashGrouping::PerfectHashGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp,
                                         unsigned estimate)
    : ExpGrouping(semantics, std::move(probeExp), std::move(buildExp)),
      m_table(std::make_unique<cuckoo_hash<unsigned, unsigned>>(estimate)) {}
PerfectHashGrouping::~PerfectHashGrouping() = default;

void PerfectHashGrouping::Reset(unsigned size) {
    Grouping::Reset(size);
    m_table->clear(size);
}

unsigned PerfectHashGrouping::Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes,
                                    const unsigned* sel, Context*) {
    return m_table->lookup(count, misses, groups.values<unsigned>(), hashes.values<unsigned>(), sel);
}

void PerfectHashGrouping::InsertHash(unsigned hash, unsigned group) {
    m_table->insert(hash, group);
}

void PerfectHashGrouping::SetPoll(std::function<void()> poll) {
    m_table->set_poll(std::move(poll));
}

GroupingIdType PerfectHashGrouping::NameId() const {
    return GroupingIdType::perfectHash;
}

void PerfectHashGrouping::AdoptGroups(Column& keys, unsigned count) {
    constexpr unsigned most = 1u << 16;
    for (unsigned first = 0; first < count;) {
        const auto rows =
            static_cast<unsigned>(std::min<uint64_t>(keys.Seek(first, std::min(most, count - first)), count - first));
        const unsigned* key = keys.GetInput().values<unsigned>();
        for (unsigned i = 0; i < rows; ++i) InsertHash(key[i], first + i);
        first += rows;
    }
    SetSize(count);
}

RefCntPtr<Exp> PerfectHashGrouping::ResolveHash(const Namespace& input, const std::vector<std::wstring>& keys) {
    constexpr unsigned bits = 32;
    const RefCntPtr<Exp> packed = resolve_packed_keys(input, keys, bits, L"PerfectHashCast");
    // The table is looked up by numbers of 32 bits; a key of less is for the direct table.
    return packed && packed->GetColumn()->GetTokenSize() == sizeof(unsigned) ? packed : nullptr;
}

}  // namespace qve
