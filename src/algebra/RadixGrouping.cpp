#include "algebra/RadixGrouping.h"

#include <algorithm>

#include "algebra/direct_table.h"
#include "algebra/packed_keys.h"

namespace qve {

namespace {

constexpr unsigned tableBits = 16;

// The key is at most 16 bits, but a signed one may come sign-extended.
struct LowBits {
    template <class K>
    size_t operator()(K key) const {
        return static_cast<unsigned short>(key);
    }
    [[gnu::target("avx2"), gnu::always_inline]] __m256i eight(const unsigned char* keys) const {
        return _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(keys)));
    }
    [[gnu::target("avx2"), gnu::always_inline]] __m256i eight(const unsigned short* keys) const {
        return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(keys)));
    }
    [[gnu::target("avx2"), gnu::always_inline]] __m256i eight(const unsigned* keys) const {
        return _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(keys)),
                                _mm256_set1_epi32((1 << tableBits) - 1));
    }
};

template <class F>
auto WithKeys(const input_column& hashes, F f) {
    switch (hashes.width) {
        case 1:
            return f(hashes.values<unsigned char>());
        case 2:
            return f(hashes.values<unsigned short>());
        default:
            return f(hashes.values<unsigned>());
    }
}

}  // namespace

RadixGrouping::RadixGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp)
    : ExpGrouping(semantics, std::move(probeExp), std::move(buildExp)), m_table(size_t{1} << tableBits) {}
RadixGrouping::~RadixGrouping() = default;

void RadixGrouping::Reset(unsigned size) {
    Grouping::Reset(size);
    std::fill(m_table.begin(), m_table.end(), 0);
}

unsigned RadixGrouping::Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes,
                              const unsigned* sel, Context*) {
    return WithKeys(hashes, [&](const auto* keys) {
        return ProbeDirect(count, misses, groups, keys, sel, m_table.data(), LowBits());
    });
}

unsigned RadixGrouping::FindInserts(unsigned count, unsigned* inserts, unsigned* retries, input_column hashes) {
    return WithKeys(hashes, [&](const auto* keys) {
        return FindInsertsDirect(count, inserts, retries, keys, m_table.data(), LowBits());
    });
}

void RadixGrouping::InsertHash(unsigned hash, unsigned group) {
    m_table[LowBits()(hash)] = group + 1;
}

void RadixGrouping::InsertHashes(unsigned count, const unsigned* rows, input_column hashes, unsigned first) {
    WithKeys(hashes, [&](const auto* keys) { InsertDirect(count, rows, keys, first, m_table.data(), LowBits()); });
}

void RadixGrouping::InsertInner(unsigned count, const unsigned* rows, input_column hashes, unsigned base) {
    WithKeys(hashes, [&](const auto* keys) { InsertRowsDirect(count, rows, keys, base, m_table.data(), LowBits()); });
}

unsigned RadixGrouping::ProbeHits(unsigned count, unsigned* hits, output_column groups, input_column hashes,
                                  const unsigned* sel, Context*) {
    return WithKeys(hashes, [&](const auto* keys) {
        return ProbeHitsDirect(count, hits, groups.values<unsigned>(), keys, sel, m_table.data(), LowBits());
    });
}

GroupingIdType RadixGrouping::NameId() const {
    return GroupingIdType::radix;
}

RefCntPtr<Exp> RadixGrouping::ResolveHash(const Namespace& input, const std::vector<std::wstring>& keys) {
    return resolve_packed_keys(input, keys, tableBits, L"RadixCast");
}

}  // namespace qve
