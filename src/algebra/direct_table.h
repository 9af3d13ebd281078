#pragma once

#include <immintrin.h>

#include "primitives/is_uniform.h"
#include "primitives/vector_level.h"
#include "types/input_column.h"
#include "types/output_column.h"

namespace qve {

// Lookups in tables that are indexed by the key itself, where an entry of 0 means that there is no group and any other
// is a group number plus 1.
//
// A Slot maps a key to its entry: `unsigned long operator()(K key) const`.

/// While groups are being found, the entry of a key whose first row has been chosen.
inline constexpr unsigned pendingEntry = ~0u;

/// What a probe of rows saw.
struct ProbedRows {
    bool missing = false;  // some have no group
    bool same = false;     // all have what the first has
};

template <class K, class Slot>
ProbedRows ProbeRows(unsigned count, const K* keys, const unsigned* sel, const unsigned* table, Slot slot,
                     unsigned* groups) {
    const unsigned first = table[slot(keys[sel ? sel[0] : 0])] - 1;
    unsigned missing = 0;
    unsigned different = 0;
    const auto look = [&](unsigned row) {
        const unsigned group = table[slot(keys[row])] - 1;
        groups[row] = group;
        missing |= group == ~0u;
        different |= group ^ first;
    };
    if (sel) {
        for (unsigned i = 0; i < count; ++i) look(sel[i]);
    } else {
        for (unsigned i = 0; i < count; ++i) look(i);
    }
    return {missing != 0, different == 0};
}

/// The same for all rows of a page, eight at a time; the keys are of at most 4 bytes, and Slot maps eight by
/// `__m256i eight(const K* keys) const`.
template <class K, class Slot>
[[gnu::target("avx2")]] ProbedRows ProbePage(unsigned count, const K* keys, const unsigned* table, Slot slot,
                                             unsigned* groups) {
    const unsigned first = table[slot(keys[0])];
    const __m256i one = _mm256_set1_epi32(1);
    const __m256i same = _mm256_set1_epi32(static_cast<int>(first));
    __m256i missing = _mm256_setzero_si256();
    __m256i different = _mm256_setzero_si256();
    unsigned i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m256i entries = _mm256_i32gather_epi32(reinterpret_cast<const int*>(table), slot.eight(keys + i), 4);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(groups + i), _mm256_sub_epi32(entries, one));
        missing = _mm256_or_si256(missing, _mm256_cmpeq_epi32(entries, _mm256_setzero_si256()));
        different = _mm256_or_si256(different, _mm256_xor_si256(entries, same));
    }
    bool anyMissing = !_mm256_testz_si256(missing, missing);
    bool anyDifferent = !_mm256_testz_si256(different, different);
    for (; i < count; ++i) {
        const unsigned entry = table[slot(keys[i])];
        groups[i] = entry - 1;
        anyMissing |= entry == 0;
        anyDifferent |= entry != first;
    }
    return {anyMissing, !anyDifferent};
}

/// Writes the group of each row, and the rows without one to `misses`; returns their number. Sets the flag of the
/// groups when they are all the same, and may then have written that of the first row only. `misses` may be `sel`.
template <class K, class Slot>
unsigned ProbeDirect(unsigned count, unsigned* misses, output_column out, const K* keys, const unsigned* sel,
                     const unsigned* table, Slot slot) {
    if (count == 0) return 0;
    unsigned* groups = out.values<unsigned>();
    if (!sel && is_uniform(count, keys, sizeof(K)) && table[slot(keys[0])] != 0) {
        // As pages are of a table that is sorted by the key.
        groups[0] = table[slot(keys[0])] - 1;
        *out.flags |= column_flags::constant;
        return 0;
    }
    ProbedRows probed;
    if constexpr (sizeof(K) <= sizeof(unsigned)) {
        const bool wide = !sel && current_vector_level() >= vector_level::avx2;
        probed = wide ? ProbePage(count, keys, table, slot, groups) : ProbeRows(count, keys, sel, table, slot, groups);
    } else {
        probed = ProbeRows(count, keys, sel, table, slot, groups);
    }
    if (!probed.missing) {
        if (probed.same) *out.flags |= column_flags::constant;
        return 0;
    }
    unsigned missed = 0;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned row = sel ? sel[i] : i;
        misses[missed] = row;
        missed += groups[row] == ~0u;
    }
    return missed;
}

/// Splits rows without a group into the first row of each key, whose entry becomes pending, and the others.
template <class K, class Slot>
unsigned FindInsertsDirect(unsigned count, unsigned* inserts, unsigned* retries, const K* keys, unsigned* table,
                           Slot slot) {
    unsigned inserted = 0;
    unsigned retried = 0;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned row = retries[i];
        unsigned& entry = table[slot(keys[row])];
        const bool taken = entry != 0;
        entry = pendingEntry;
        inserts[inserted] = row;
        retries[retried] = row;
        inserted += !taken;
        retried += taken;
    }
    return inserted;
}

template <class K, class Slot>
void InsertDirect(unsigned count, const unsigned* rows, const K* keys, unsigned first, unsigned* table, Slot slot) {
    for (unsigned i = 0; i < count; ++i) table[slot(keys[rows[i]])] = first + i + 1;
}

/// The same for rows that get the group `base` + their position each.
template <class K, class Slot>
void InsertRowsDirect(unsigned count, const unsigned* rows, const K* keys, unsigned base, unsigned* table, Slot slot) {
    for (unsigned i = 0; i < count; ++i) table[slot(keys[rows[i]])] = base + rows[i] + 1;
}

/// Writes the group of each row, and the rows that have one to `hits`, which has room for one more than `count`;
/// returns their number.
template <class K, class Slot>
unsigned ProbeHitsDirect(unsigned count, unsigned* hits, unsigned* groups, const K* keys, const unsigned* sel,
                         const unsigned* table, Slot slot) {
    unsigned found = 0;
    const auto look = [&](unsigned row) {
        const unsigned group = table[slot(keys[row])] - 1;
        groups[row] = group;
        hits[found] = row;
        found += group != ~0u;
    };
    if (sel) {
        for (unsigned i = 0; i < count; ++i) look(sel[i]);
    } else {
        for (unsigned i = 0; i < count; ++i) look(i);
    }
    return found;
}

}  // namespace qve
