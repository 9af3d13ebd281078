#pragma once

#include <cstdint>

#include "os/GrowingMemory.h"

namespace qve {

/// From the 32-bit hash of a value to the tokens of the entries that have it: one array, in which an entry stands at
/// its hash or at the next free place behind. Made for building: a value costs one place in memory, whether it is
/// found or added. Slots take 8 bytes until a token needs more than 32 bits, then 16. Finding is safe during other
/// finding.
class token_index {
public:
    static constexpr unsigned long long absent = ~0ULL;

    /// Room for `expected` entries.
    explicit token_index(uint64_t expected = 0);

    uint64_t size() const { return m_count; }
    /// What it takes in memory.
    uint64_t bytes() const { return m_slots.size(); }

    /// Brings the place of a hash into the cache.
    void prefetch(uint32_t hash) const { __builtin_prefetch(m_slots.data() + ((hash & m_mask) << (m_wide ? 4 : 3))); }
    /// Calls visit(token) for the entries of a hash until one returns true; gives the token of that, or absent.
    template <class Visit>
    unsigned long long find_if(uint32_t hash, Visit visit) const {
        return m_wide ? find_in<wide_slot>(hash, visit) : find_in<slot>(hash, visit);
    }
    /// The first entry of a hash, or absent.
    unsigned long long first(uint32_t hash) const {
        return find_if(hash, [](unsigned long long) { return true; });
    }
    /// Adds an entry. Throws std::bad_alloc.
    void insert(uint32_t hash, unsigned long long token);

private:
    // `entry` is the token and one: 0 is a free place.
    struct slot {
        uint32_t hash;
        uint32_t entry;
    };
    struct wide_slot {
        uint64_t hash;
        uint64_t entry;
    };

    template <class Slot, class Visit>
    unsigned long long find_in(uint32_t hash, Visit& visit) const {
        const auto* const slots = reinterpret_cast<const Slot*>(m_slots.data());
        for (uint64_t i = hash & m_mask; slots[i].entry; i = (i + 1) & m_mask) {
            if (slots[i].hash != hash) continue;
            const unsigned long long token = slots[i].entry - 1ULL;
            if (visit(token)) return token;
        }
        return absent;
    }
    template <class Slot>
    static void put(GrowingMemory& slots, uint64_t mask, uint32_t hash, uint64_t entry);
    template <class From, class To>
    void copy_to(GrowingMemory& slots, uint64_t mask) const;
    void rebuild(uint64_t mask, bool wide);

    GrowingMemory m_slots;
    uint64_t m_mask = 0;
    uint64_t m_count = 0;
    bool m_wide = false;
};

}  // namespace qve
