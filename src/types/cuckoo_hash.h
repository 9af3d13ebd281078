#pragma once

#include <cstddef>
#include <functional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "os/BudgetedMemory.h"

namespace qve {

/// A hash table from K to V with three places for each key, made for looking up whole vectors. In a table that fits a
/// cache, a lookup reads all three and has no data-dependent branch; in one beyond the caches it reads the next place
/// only when the one before does not tell: a key lies in its first place that was free, and a place never gets free
/// again, so a free place ends the search. K is unsigned, V unsigned or unsigned long long; the value all ones means
/// "absent" and is never stored. A key with several values keeps the first in its place and the others in `collisions`.
/// Single-threaded while it is written; finding is safe during other finding.
template <class K, class V>
class cuckoo_hash {
public:
    using slot = std::pair<K, V>;
    static constexpr V absent = static_cast<V>(~V{0});

    /// Room for `expected` keys.
    explicit cuckoo_hash(size_t expected = 0);

    /// The value of a key, or absent.
    V lookup1(K key) const;
    /// values[i] becomes the value of keys[i], for i below `count`, or at the selected positions; the positions without
    /// a value go to `misses`, in order. Returns their number. `misses` needs room for `count` + 1, and must not be
    /// null.
    unsigned lookup(unsigned count, unsigned* misses, V* values, const K* keys,
                    const unsigned* selection = nullptr) const;
    /// For each of the `count` positions in `rows`: the value after values[row] among those of keys[row] that collided
    /// goes to values[row], and the row to `found`; rows that have no further value go to `misses`. Either list may be
    /// `rows` itself. Returns the number found; `count` less that went to `misses`.
    unsigned collision_lookup(unsigned count, unsigned* found, unsigned* misses, V* values, const K* keys,
                              const unsigned* rows) const;
    /// Calls visit(value) for every value of a key until one returns true; true when one did.
    template <class Visit>
    bool find_if(K key, Visit visit) const {
        const V first = lookup1(key);
        if (first == absent) return false;
        if (visit(first)) return true;
        if (m_collisions.empty()) return false;
        const auto [from, to] = m_collisions.equal_range(key);
        for (auto it = from; it != to; ++it) {
            if (visit(it->second)) return true;
        }
        return false;
    }
    /// Adds a value to a key. Nothing happens for absent, and for a pair that is there already. Throws
    /// QVE_UnderflowError 40663 when hashes are so degenerate that growing does not help, and std::bad_alloc.
    void insert(K key, V value);
    /// Forgets everything and makes room for `expected` keys.
    void clear(size_t expected = 0);

    /// What a growing table calls now and then. When it throws, the table has lost keys: only clear and the destructor
    /// may follow.
    void set_poll(std::function<void()> poll) { m_poll = std::move(poll); }

    /// Brings the places of a key into the cache.
    void prefetch(K key) const {
        __builtin_prefetch(&m_slots[first(key)]);
        __builtin_prefetch(&m_slots[second(key)]);
        __builtin_prefetch(&m_slots[third(key)]);
    }
    /// Brings the place that a key is looked for first into the cache.
    void prefetch_first(K key) const { __builtin_prefetch(&m_slots[first(key)]); }

    bool HasCollisions() const { return !m_collisions.empty(); }
    /// Keys stored; further values of a key are counted by collisions().
    size_t size() const { return m_count; }
    size_t collisions() const { return m_collisions.size(); }
    size_t stashed() const { return m_stash.size(); }
    size_t capacity() const { return m_slots.size(); }
    unsigned nbits() const { return m_nbits; }

private:
    size_t mask() const { return (size_t{1} << m_nbits) - 1; }
    // The products are taken in 64 bits, so that tables above 65536 places a part spread over all of them.
    size_t first(K key) const { return key & mask(); }
    size_t second(K key) const {
        return ((static_cast<unsigned long long>(key) * 0xd1521cb7U) >> 16 & mask()) | size_t{1} << m_nbits;
    }
    size_t third(K key) const {
        return ((static_cast<unsigned long long>(key) * 0x87a2e4d5U) >> 16 & mask()) | size_t{2} << m_nbits;
    }
    // As arithmetic: of a condition the compiler makes a jump, which waits for the memory and is often foretold wrong.
    static V only_if(bool condition, V value) { return static_cast<V>((V{0} - static_cast<V>(condition)) & value); }
    V probe(K key) const {
        const slot& a = m_slots[first(key)];
        const slot& b = m_slots[second(key)];
        const slot& c = m_slots[third(key)];
        const V va = only_if(a.first == key, static_cast<V>(a.second + 1));
        const V vb = only_if(b.first == key, static_cast<V>(b.second + 1));
        const V vc = only_if(c.first == key, static_cast<V>(c.second + 1));
        return static_cast<V>((va | vb | vc) - 1);
    }
    V stash_lookup(K key) const;
    template <class RowAt>
    unsigned lookup_in_turn(unsigned count, unsigned* misses, V* values, const K* keys, RowAt row_at) const;
    void insert_further(K key, V present, V value);
    bool insert_worker(K key, V value);
    void rehash();

    unsigned m_nbits = 1;
    size_t m_count = 0;
    dense_vector<slot> m_slots;
    std::vector<slot> m_stash;
    std::unordered_multimap<K, V> m_collisions;
    std::function<void()> m_poll;
};

extern template class cuckoo_hash<unsigned, unsigned>;
extern template class cuckoo_hash<unsigned, unsigned long long>;

}  // namespace qve
