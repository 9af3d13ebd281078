#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace qve {

class ProgressCallback;
class usrheap;

/// The places that the values of a dictionary have in the order of their type's collation, for tokens that do not
/// compare by themselves. Equal values have the same place.
class DictionaryRanks {
public:
    /// Of the values of `heap` that `tokens` refer to; other tokens must not be asked for. All ones and tokens without
    /// a value count as null. Throws CancelledException when `progress`, which may be null, says so.
    DictionaryRanks(const usrheap& heap, std::span<const uint64_t> tokens, const ProgressCallback* progress);

    /// 0 for a null; values count from 1.
    uint64_t GetRank(uint64_t token) const {
        const uint64_t word = token >> 6;
        if (word >= m_present.size()) return 0;
        const uint64_t below = m_present[word] & ((uint64_t{1} << (token & 63)) - 1);
        return m_ranks[m_before[word] + static_cast<unsigned>(__builtin_popcountll(below))];
    }

private:
    // One bit for each token that occurs, how many there are before each word of them, and the ranks in token order.
    std::vector<uint64_t> m_present;
    std::vector<unsigned> m_before;
    std::vector<unsigned> m_ranks;
};

}  // namespace qve
