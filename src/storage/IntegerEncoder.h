#pragma once

#include <cstdint>
#include <vector>

#include "system/RefCntObject.h"

namespace qve {

/// Numbers the distinct values of a column in the order in which they come: 0, 1, 2 and so on. Counts up to a limit of
/// values and then gives up, so that a column of all different values costs no memory.
class IntegerEncoder : public RefCntObject {
public:
    /// More distinct values than this are not told apart: the most that a dictionary of 15 bits can number.
    static constexpr unsigned maximalCount = (1u << 15) - 1;
    static constexpr unsigned noToken = ~0u;

    explicit IntegerEncoder(unsigned limit = maximalCount);

    /// The token of `value`, adding it when it is new; noToken when there is no room for it.
    unsigned Add(int64_t value) {
        for (uint64_t slot = Home(value);; slot = (slot + 1) & m_mask) {
            const unsigned token = m_slots[slot];
            if (token == noToken) return Insert(value, slot);
            if (m_values[token] == value) return token;
        }
    }
    /// The token of `value`; noToken when it has none.
    unsigned Find(int64_t value) const {
        for (uint64_t slot = Home(value);; slot = (slot + 1) & m_mask) {
            const unsigned token = m_slots[slot];
            if (token == noToken || m_values[token] == value) return token;
        }
    }
    /// The tokens of `count` cells of `width` bytes; false, with some of them added, when there is no room.
    bool Encode(uint64_t count, const char* cells, unsigned width, unsigned* tokens);

    /// False once a value found no room.
    bool IsComplete() const { return m_complete; }
    /// Drops the table and is not complete from now on.
    void GiveUp();
    /// The values by their tokens.
    const std::vector<int64_t>& GetValues() const { return m_values; }
    unsigned GetCount() const { return static_cast<unsigned>(m_values.size()); }

private:
    uint64_t Home(int64_t value) const { return (static_cast<uint64_t>(value) * 0x9E3779B97F4A7C15u) >> m_shift; }
    unsigned Insert(int64_t value, uint64_t slot);
    void Grow();

    unsigned m_limit;
    bool m_complete = true;
    unsigned m_shift;  // 64 less the logarithm of the number of slots
    uint64_t m_mask;
    std::vector<unsigned> m_slots;  // tokens; at most half of them are taken
    std::vector<int64_t> m_values;
};

}  // namespace qve
