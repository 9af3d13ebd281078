#pragma once

#include <bit>
#include <cstdint>
#include <vector>

#include "primitives/vector_level.h"

namespace qve {

/// The row numbers of keys that stand in ascending order in their table, each once: the number of a key is the number
/// of the keys before it. Of a range of slots it keeps a bit for each and a count for every 32, a sixteenth of what a
/// table of row numbers takes, so that it stays in a cache for longer.
class KeyRanks {
public:
    /// From a table of `slots` entries that are 0 where there is no key, else the row number plus 1. Empty when the
    /// rows of the slots in order are not 0, 1, 2 and so on.
    KeyRanks(const unsigned* entries, uint64_t slots);

    bool IsEmpty() const { return m_blocks.empty(); }

    /// Writes the row of each key, all ones where there is none, and the positions of keys with a row to `hits`, which
    /// has room for one more than `count`; returns their number. `slot` maps a key to its slot, or to the one behind
    /// the last.
    template <class K, class Slot>
    unsigned ProbeHits(unsigned count, unsigned* hits, unsigned* rows, const K* keys, const unsigned* sel,
                       Slot slot) const {
        if (current_vector_level() >= vector_level::avx2)
            return Fast(count, hits, rows, keys, sel, slot, m_blocks.data());
        return Look(count, hits, rows, keys, sel, slot, m_blocks.data());
    }

private:
    struct Block {
        uint32_t keys = 0;    // bit k: there is the key of slot k
        uint32_t before = 0;  // keys in the blocks before
    };

    template <class K, class Slot>
    [[gnu::always_inline]] static unsigned Look(unsigned count, unsigned* hits, unsigned* rows, const K* keys,
                                                const unsigned* sel, Slot slot, const Block* blocks) {
        unsigned found = 0;
        for (unsigned i = 0; i < count; ++i) {
            const unsigned position = sel ? sel[i] : i;
            const auto place = slot(keys[position]);
            const Block block = blocks[place >> 5];
            const uint32_t mask = uint32_t{1} << (place & 31);
            const bool hit = block.keys & mask;
            const auto rank = block.before + static_cast<uint32_t>(std::popcount(block.keys & (mask - 1)));
            rows[position] = rank | (uint32_t{hit} - 1);  // no branch: hits come as they like
            hits[found] = position;
            found += hit;
        }
        return found;
    }
    // The same where the processor counts bits by itself.
    template <class K, class Slot>
    [[gnu::target("avx2,popcnt")]] static unsigned Fast(unsigned count, unsigned* hits, unsigned* rows, const K* keys,
                                                        const unsigned* sel, Slot slot, const Block* blocks) {
        return sel ? Look(count, hits, rows, keys, sel, slot, blocks)
                   : Look(count, hits, rows, keys, nullptr, slot, blocks);
    }

    std::vector<Block> m_blocks;
};

}  // namespace qve
