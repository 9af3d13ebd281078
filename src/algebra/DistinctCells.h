#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "os/ZeroedMemory.h"

namespace qve {

/// The different values of each group, as cells of up to 8 bytes. Values of a small range are marked in a bit map for
/// each group; when those would grow large, and for all other values, pairs of group and value lie in one hash table.
class DistinctCells {
public:
    /// Values may be any from `least` to `least` + `range` - 1; a range of 0 says that nothing is known.
    DistinctCells(uint64_t least, uint64_t range);

    /// Adds `count` values, each to its group. `counts` has the number of different values of each group, and room for
    /// every group; a null group list means `group` for all.
    void Add(unsigned count, const uint64_t* values, const unsigned* groups, unsigned group,
             std::vector<uint64_t>& counts);

    /// Whether values lie in the hash table, and no longer in bit maps.
    bool IsHashed() const { return m_hashed; }

private:
    struct Entry {
        uint64_t value;
        uint64_t group;  // one more than the number; 0 for a free place
    };

    void AddBits(unsigned count, const uint64_t* values, const unsigned* groups, unsigned group,
                 std::vector<uint64_t>& counts);
    void MoveBitsToTable();
    void Grow(uint64_t places);
    /// Whether the pair is new. The table must have a free place.
    bool Insert(uint64_t value, uint64_t group);
    static uint64_t Hash(uint64_t value, uint64_t group);
    Entry* Places() { return static_cast<Entry*>(m_table.data()); }

    const uint64_t m_least;
    const uint64_t m_words;                           // of a group's bit map; 0: no bit maps
    std::vector<std::unique_ptr<uint64_t[]>> m_bits;  // by group, null for one without values
    uint64_t m_bitBytes = 0;
    bool m_hashed;
    ZeroedMemory m_table;
    uint64_t m_mask = 0;
    uint64_t m_used = 0;
};

}  // namespace qve
