#include "types/cuckoo_hash.h"

#include <algorithm>
#include <string>

#include "system/QuillonException.h"
#include "types/status.h"

namespace qve {
namespace {

// How far ahead of its use a place is asked for, in keys; only tables beyond the second-level cache gain by it.
constexpr unsigned prefetch_distance = 8;
constexpr size_t prefetch_from_bytes = size_t{1} << 19;
// From this size on the places are read in turn: what counts are the places read.
constexpr size_t in_turn_from_bytes = size_t{1} << 25;

unsigned bits_for(size_t expected) {
    unsigned nbits = 1;
    while ((size_t{3} << nbits) * 9 < expected * 10) ++nbits;
    return nbits;
}

}  // namespace

template <class K, class V>
cuckoo_hash<K, V>::cuckoo_hash(size_t expected) {
    clear(expected);
}

template <class K, class V>
void cuckoo_hash<K, V>::clear(size_t expected) {
    m_nbits = bits_for(expected);
    m_count = 0;
    m_slots.assign(size_t{3} << m_nbits, slot(0, absent));
    m_stash.clear();
    m_collisions.clear();
}

template <class K, class V>
V cuckoo_hash<K, V>::stash_lookup(K key) const {
    for (const slot& entry : m_stash) {
        if (entry.first == key) return entry.second;
    }
    return absent;
}

template <class K, class V>
V cuckoo_hash<K, V>::lookup1(K key) const {
    const V value = probe(key);
    return value == absent && !m_stash.empty() ? stash_lookup(key) : value;
}

template <class K, class V>
template <class RowAt>
unsigned cuckoo_hash<K, V>::lookup_in_turn(unsigned count, unsigned* misses, V* values, const K* keys,
                                           RowAt row_at) const {
    constexpr unsigned block = 1024;
    unsigned pending[block];
    unsigned missed = 0;
    for (unsigned base = 0; base < count; base += block) {
        const unsigned rows = std::min(block, count - base);
        // Looks at one place of each row that `at` lists, and keeps the rows whose search goes on.
        const auto look = [&](unsigned searched, auto at, auto place) {
            const unsigned ahead = std::min(searched, prefetch_distance);
            for (unsigned i = 0; i < ahead; ++i) __builtin_prefetch(&m_slots[place(keys[at(i)])]);
            unsigned still = 0;
            for (unsigned i = 0; i < searched; ++i) {
                if (i + prefetch_distance < searched) {
                    __builtin_prefetch(&m_slots[place(keys[at(i + prefetch_distance)])]);
                }
                const unsigned row = at(i);
                const slot& entry = m_slots[place(keys[row])];
                const bool found = entry.first == keys[row];
                values[row] = found ? entry.second : absent;
                pending[still] = row;
                still += !found & (entry.second != absent);
            }
            return still;
        };
        const auto listed = [&pending](unsigned i) { return pending[i]; };
        unsigned still = look(
            rows, [&](unsigned i) { return row_at(base + i); }, [this](K key) { return first(key); });
        still = look(still, listed, [this](K key) { return second(key); });
        look(still, listed, [this](K key) { return third(key); });
        for (unsigned i = 0; i < rows; ++i) {
            const unsigned row = row_at(base + i);
            misses[missed] = row;
            missed += values[row] == absent;
        }
    }
    return missed;
}

template <class K, class V>
unsigned cuckoo_hash<K, V>::lookup(unsigned count, unsigned* misses, V* values, const K* keys,
                                   const unsigned* selection) const {
    unsigned missed = 0;
    const auto pass = [&](auto row_at, auto ahead) {
        for (unsigned i = 0; i < count; ++i) {
            ahead(i);
            const unsigned row = row_at(i);
            const V value = probe(keys[row]);
            values[row] = value;
            misses[missed] = row;
            missed += value == absent;
        }
    };
    const auto with_rows = [&](auto row_at) {
        if (m_slots.size() * sizeof(slot) >= in_turn_from_bytes) {
            missed = lookup_in_turn(count, misses, values, keys, row_at);
        } else if (m_slots.size() * sizeof(slot) >= prefetch_from_bytes) {
            for (unsigned i = 0; i < std::min(count, prefetch_distance); ++i) prefetch(keys[row_at(i)]);
            pass(row_at, [&](unsigned i) {
                if (i + prefetch_distance < count) prefetch(keys[row_at(i + prefetch_distance)]);
            });
        } else {
            pass(row_at, [](unsigned) {});
        }
    };
    if (selection) {
        with_rows([selection](unsigned i) { return selection[i]; });
    } else {
        with_rows([](unsigned i) { return i; });
    }
    if (missed == 0 || m_stash.empty()) return missed;
    unsigned still = 0;
    for (unsigned i = 0; i < missed; ++i) {
        const unsigned row = misses[i];
        const V value = stash_lookup(keys[row]);
        values[row] = value;
        misses[still] = row;
        still += value == absent;
    }
    return still;
}

template <class K, class V>
unsigned cuckoo_hash<K, V>::collision_lookup(unsigned count, unsigned* found, unsigned* misses, V* values,
                                             const K* keys, const unsigned* rows) const {
    unsigned hits = 0;
    unsigned missed = 0;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned row = rows[i];
        auto [next, end] = m_collisions.equal_range(keys[row]);
        // The value in the key's own place comes first, those in the multimap follow.
        const V current = values[row];
        auto it = next;
        while (it != end && it->second != current) ++it;
        if (it != end) next = std::next(it);
        if (next != end) {
            values[row] = next->second;
            found[hits++] = row;
        } else {
            misses[missed++] = row;
        }
    }
    return hits;
}

template <class K, class V>
void cuckoo_hash<K, V>::insert(K key, V value) {
    if (value == absent) return;
    if (m_count * 10 > m_slots.size() * 9 && lookup1(key) == absent) rehash();
    for (const size_t place : {first(key), second(key), third(key)}) {
        slot& entry = m_slots[place];
        if (entry.second == absent) {
            entry = slot(key, value);
            ++m_count;
            return;
        }
        if (entry.first == key) return insert_further(key, entry.second, value);
    }
    const V present = m_stash.empty() ? absent : stash_lookup(key);
    if (present != absent) return insert_further(key, present, value);
    if (insert_worker(key, value) && m_stash.size() > m_nbits + 1) rehash();
}

// Another value of a key that has the value `present`.
template <class K, class V>
void cuckoo_hash<K, V>::insert_further(K key, V present, V value) {
    if (present == value) return;
    const auto [from, to] = m_collisions.equal_range(key);
    if (std::none_of(from, to, [value](const auto& pair) { return pair.second == value; })) {
        m_collisions.emplace(key, value);
    }
}

// True when the entry, or one that it pushed out, ended in the stash.
template <class K, class V>
bool cuckoo_hash<K, V>::insert_worker(K key, V value) {
    constexpr unsigned rounds = 500;
    slot entry(key, value);
    ++m_count;
    for (unsigned round = 0; round < rounds; ++round) {
        const size_t places[3] = {first(entry.first), second(entry.first), third(entry.first)};
        for (const size_t place : places) {
            if (m_slots[place].second == absent) {
                m_slots[place] = entry;
                return false;
            }
        }
        std::swap(entry, m_slots[places[(m_count + round) % 3]]);
    }
    m_stash.push_back(entry);
    return true;
}

template <class K, class V>
void cuckoo_hash<K, V>::rehash() {
    if (m_nbits > 16 && m_count < m_slots.size() / 8) {
        throw QVE_UnderflowError(
            status::cuckoo_hash_rehash,
            "wretched hash table utilization (cuckoo_hash::rehash(): _nbits=" + std::to_string(m_nbits) +
                " capacity=" + std::to_string(m_slots.size()) + " stashes=" + std::to_string(m_stash.size()) +
                " collisions=" + std::to_string(m_collisions.size()) + ")");
    }
    constexpr size_t polled_slots = size_t{1} << 16;
    dense_vector<slot> larger(size_t{3} << (m_nbits + 1), slot(0, absent));
    ++m_nbits;
    m_count = 0;
    m_slots.swap(larger);
    std::vector<slot> stash;
    m_stash.swap(stash);
    for (size_t i = 0; i < larger.size(); ++i) {
        if (m_poll && i % polled_slots == 0) m_poll();
        if (larger[i].second != absent) insert_worker(larger[i].first, larger[i].second);
    }
    for (const slot& entry : stash) insert_worker(entry.first, entry.second);
}

template class cuckoo_hash<unsigned, unsigned>;
template class cuckoo_hash<unsigned, unsigned long long>;

}  // namespace qve
