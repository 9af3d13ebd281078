#include "algebra/DistinctCells.h"

#include <algorithm>
#include <bit>

namespace qve {
namespace {

constexpr uint64_t mostWords = uint64_t{1} << 21;     // a bit map of 16 MiB
constexpr uint64_t mostBitBytes = uint64_t{1} << 26;  // all of them
constexpr uint64_t firstPlaces = uint64_t{1} << 12;

}  // namespace

DistinctCells::DistinctCells(uint64_t least, uint64_t range)
    : m_least(least), m_words(range == 0 || range / 64 >= mostWords ? 0 : range / 64 + 1), m_hashed(m_words == 0) {}

uint64_t DistinctCells::Hash(uint64_t value, uint64_t group) {
    uint64_t mixed = (value ^ (group * 0x9E3779B97F4A7C15u)) * 0xD6E8FEB86659FD93u;
    mixed ^= mixed >> 32;
    return mixed * 0xD6E8FEB86659FD93u >> 7;
}

void DistinctCells::Add(unsigned count, const uint64_t* values, const unsigned* groups, unsigned group,
                        std::vector<uint64_t>& counts) {
    if (!m_hashed) AddBits(count, values, groups, group, counts);
    if (!m_hashed) return;
    if (2 * (m_used + count) > m_mask) Grow(std::max(firstPlaces, std::bit_ceil(4 * (m_used + count))));
    // What is looked for is asked for some rows ahead, so that the table's memory is there by then.
    constexpr unsigned ahead = 16;
    for (unsigned i = 0; i < count; ++i) {
        if (i + ahead < count) {
            const unsigned next = groups ? groups[i + ahead] : group;
            __builtin_prefetch(Places() + (Hash(values[i + ahead], next + uint64_t{1}) & m_mask));
        }
        const unsigned own = groups ? groups[i] : group;
        counts[own] += Insert(values[i], own + uint64_t{1});
    }
}

bool DistinctCells::Insert(uint64_t value, uint64_t group) {
    for (uint64_t place = Hash(value, group) & m_mask;; place = (place + 1) & m_mask) {
        Entry& entry = Places()[place];
        if (entry.group == group && entry.value == value) return false;
        if (entry.group != 0) continue;
        entry = {value, group};
        ++m_used;
        return true;
    }
}

void DistinctCells::Grow(uint64_t places) {
    ZeroedMemory old = std::move(m_table);
    m_table = ZeroedMemory(places * sizeof(Entry), true);
    m_mask = places - 1;
    m_used = 0;
    const auto* entries = static_cast<const Entry*>(old.data());
    for (uint64_t i = 0; i < old.size() / sizeof(Entry); ++i) {
        if (entries[i].group != 0) Insert(entries[i].value, entries[i].group);
    }
}

void DistinctCells::AddBits(unsigned count, const uint64_t* values, const unsigned* groups, unsigned group,
                            std::vector<uint64_t>& counts) {
    if (m_bits.size() < counts.size()) m_bits.resize(counts.size());
    for (unsigned i = 0; i < count; ++i) {
        const unsigned own = groups ? groups[i] : group;
        const uint64_t bit = values[i] - m_least;
        // Where a range was not true, or the maps get large, all goes to the table: these values too, once more.
        const bool fits = bit / 64 < m_words && (m_bits[own] || m_bitBytes + m_words * 8 <= mostBitBytes);
        if (!fits) return MoveBitsToTable();
        if (!m_bits[own]) {
            m_bits[own] = std::make_unique<uint64_t[]>(m_words);
            m_bitBytes += m_words * 8;
        }
        uint64_t& word = m_bits[own][bit / 64];
        const uint64_t mask = uint64_t{1} << bit % 64;
        counts[own] += (word & mask) == 0;
        word |= mask;
    }
}

void DistinctCells::MoveBitsToTable() {
    m_hashed = true;
    uint64_t values = 0;
    for (const auto& bits : m_bits)
        for (uint64_t word = 0; bits && word < m_words; ++word) values += std::popcount(bits[word]);
    Grow(std::max(firstPlaces, std::bit_ceil(4 * values)));
    for (size_t group = 0; group < m_bits.size(); ++group) {
        for (uint64_t word = 0; m_bits[group] && word < m_words; ++word) {
            for (uint64_t bits = m_bits[group][word]; bits != 0; bits &= bits - 1)
                Insert(m_least + 64 * word + std::countr_zero(bits), group + uint64_t{1});
        }
        m_bits[group].reset();
    }
    m_bits.clear();
}

}  // namespace qve
