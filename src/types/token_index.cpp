#include "types/token_index.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace qve {
namespace {

constexpr uint64_t smallest = 64;

// A table is at most five eighths full: then nearly every search ends within one cache line.
constexpr uint64_t slots_for(uint64_t entries) {
    return std::bit_ceil(std::max(smallest, entries + entries / 5 * 3));
}

}  // namespace

token_index::token_index(uint64_t expected) : m_mask(slots_for(expected) - 1) {
    m_slots.Resize((m_mask + 1) * sizeof(slot));
}

template <class Slot>
void token_index::put(GrowingMemory& slots, uint64_t mask, uint32_t hash, uint64_t entry) {
    auto* const places = reinterpret_cast<Slot*>(slots.data());
    uint64_t i = hash & mask;
    while (places[i].entry) i = (i + 1) & mask;
    places[i] = {hash, static_cast<decltype(Slot::entry)>(entry)};
}

template <class From, class To>
void token_index::copy_to(GrowingMemory& slots, uint64_t mask) const {
    const auto* const places = reinterpret_cast<const From*>(m_slots.data());
    for (uint64_t i = 0; i <= m_mask; ++i) {
        if (places[i].entry) put<To>(slots, mask, static_cast<uint32_t>(places[i].hash), places[i].entry);
    }
}

void token_index::rebuild(uint64_t mask, bool wide) {
    GrowingMemory slots;
    slots.Resize((mask + 1) * (wide ? sizeof(wide_slot) : sizeof(slot)));
    if (m_wide) {
        copy_to<wide_slot, wide_slot>(slots, mask);
    } else if (wide) {
        copy_to<slot, wide_slot>(slots, mask);
    } else {
        copy_to<slot, slot>(slots, mask);
    }
    m_slots.Swap(slots);
    m_mask = mask;
    m_wide = wide;
}

void token_index::insert(uint32_t hash, unsigned long long token) {
    if (token == absent) return;
    const bool wide = m_wide || token >= 0xFFFFFFFFULL;
    const bool full = (m_count + 1) * 8 > (m_mask + 1) * 5;
    if (full || wide != m_wide) rebuild(full ? m_mask * 2 + 1 : m_mask, wide);
    if (m_wide) {
        put<wide_slot>(m_slots, m_mask, hash, token + 1);
    } else {
        put<slot>(m_slots, m_mask, hash, token + 1);
    }
    ++m_count;
}

}  // namespace qve
