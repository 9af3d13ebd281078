#include "storage/IntegerEncoder.h"

#include <cstring>

#include "storage/integer_width.h"

namespace qve {

namespace {

constexpr unsigned initialLog = 9;  // room for 256 values, as most columns of codes need no more

}  // namespace

IntegerEncoder::IntegerEncoder(unsigned limit)
    : m_limit(limit),
      m_shift(64 - initialLog),
      m_mask((uint64_t{1} << initialLog) - 1),
      m_slots(uint64_t{1} << initialLog, noToken) {}

unsigned IntegerEncoder::Insert(int64_t value, uint64_t slot) {
    if (m_values.size() >= m_limit) {
        m_complete = false;
        return noToken;
    }
    const unsigned token = static_cast<unsigned>(m_values.size());
    m_values.push_back(value);
    m_slots[slot] = token;
    if (m_values.size() * 2 > m_slots.size()) Grow();
    return token;
}

void IntegerEncoder::Grow() {
    --m_shift;
    m_mask = m_mask * 2 + 1;
    m_slots.assign(m_mask + 1, noToken);
    for (unsigned token = 0; token < m_values.size(); ++token) {
        uint64_t slot = Home(m_values[token]);
        while (m_slots[slot] != noToken) slot = (slot + 1) & m_mask;
        m_slots[slot] = token;
    }
}

void IntegerEncoder::GiveUp() {
    m_complete = false;
    m_limit = 0;
    m_values = {};
    m_shift = 64 - initialLog;
    m_mask = (uint64_t{1} << initialLog) - 1;
    m_slots.assign(m_mask + 1, noToken);
    m_slots.shrink_to_fit();
}

bool IntegerEncoder::Encode(uint64_t count, const char* cells, unsigned width, unsigned* tokens) {
    return with_width(width, [&](auto zero) {
        using T = decltype(zero);
        for (uint64_t i = 0; i < count; ++i) {
            T cell;
            std::memcpy(&cell, cells + i * sizeof(T), sizeof(T));
            const unsigned token = Add(cell);
            if (token == noToken) return false;
            tokens[i] = token;
        }
        return true;
    });
}

}  // namespace qve
