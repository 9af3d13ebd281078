#pragma once

#include "types/input_column.h"
#include "types/output_column.h"

namespace qve {

// Lookups in tables that are indexed by the key itself, where an entry of 0 means that there is no group and any other
// is a group number plus 1.
//
// A Slot maps a key to its entry: `unsigned long operator()(K key) const`.

/// While groups are being found, the entry of a key whose first row has been chosen.
inline constexpr unsigned pendingEntry = ~0u;

/// Writes the group of each row, and the rows without one to `misses`; returns their number. Sets the flag of the
/// groups when they are all the same. `misses` may be `sel`.
template <class K, class Slot>
unsigned ProbeDirect(unsigned count, unsigned* misses, output_column out, const K* keys, const unsigned* sel,
                     const unsigned* table, Slot slot) {
    if (count == 0) return 0;
    unsigned* groups = out.values<unsigned>();
    const unsigned first = table[slot(keys[sel ? sel[0] : 0])] - 1;
    unsigned missing = 0;
    unsigned different = 0;
    if (sel) {
        for (unsigned i = 0; i < count; ++i) {
            const unsigned row = sel[i];
            const unsigned group = table[slot(keys[row])] - 1;
            groups[row] = group;
            missing |= group == ~0u;
            different |= group ^ first;
        }
    } else {
        for (unsigned i = 0; i < count; ++i) {
            const unsigned group = table[slot(keys[i])] - 1;
            groups[i] = group;
            missing |= group == ~0u;
            different |= group ^ first;
        }
    }
    if (!missing) {
        if (!different) *out.flags |= column_flags::constant;
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
