#pragma once

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "os/BudgetedMemory.h"

namespace qve {

/// A hash table from K to V, both unsigned 32-bit, that many threads fill at one time without a lock: chains of nodes
/// under buckets that are exchanged by compare-and-swap. The nodes stand in an array by value, so that a value belongs
/// to one insertion only. A key may have any number of values. All ones means "absent" and is never stored.
///
/// Filling ends before reading begins: the threads that read must have been told so by a lock, a join or a task's end.
template <class K, class V>
class cas_hash {
public:
    static constexpr V absent = static_cast<V>(~V{0});

    /// Room for the values 0 to `expected` - 1.
    explicit cas_hash(size_t expected)
        : m_bits(static_cast<unsigned>(std::bit_width(expected))),
          m_nodes(expected),
          m_buckets(size_t{1} << m_bits, 0) {}

    /// Adds a value to a key. Any thread.
    void insert(K key, V value) {
        std::atomic_ref<uint64_t> bucket(m_buckets[key & mask()]);
        m_nodes[value].hash = key;
        push(bucket, m_nodes[value], filter(key));
    }

    /// values[i] becomes a value of keys[i], for i below `count`, or at the selected positions; the positions without
    /// one go to `misses`, in order, which has room for one more than `count` and may be `selection`. Returns their
    /// number.
    unsigned lookup(unsigned count, unsigned* misses, V* values, const K* keys,
                    const unsigned* selection = nullptr) const {
        unsigned missed = 0;
        for (unsigned i = 0; i < count; ++i) {
            const unsigned row = selection ? selection[i] : i;
            const K key = keys[row];
            const uint64_t bucket = m_buckets[key & mask()];
            const node* found = bucket & filter(key) ? find(chain(bucket), key) : nullptr;
            values[row] = found ? found->value : absent;
            misses[missed] = row;
            missed += !found;
        }
        return missed;
    }
    /// For each of the `count` positions in `rows`: the value of keys[row] after values[row] goes to values[row], and
    /// the row to `found`; rows that have no further value go to `misses`. Either list may be `rows` itself. Returns
    /// the number found.
    unsigned collision_lookup(unsigned count, unsigned* found, unsigned* misses, V* values, const K* keys,
                              const unsigned* rows) const {
        unsigned hits = 0;
        unsigned missed = 0;
        for (unsigned i = 0; i < count; ++i) {
            const unsigned row = rows[i];
            if (const node* next = find(m_nodes[values[row]].next, keys[row])) {
                values[row] = next->value;
                found[hits++] = row;
            } else {
                misses[missed++] = row;
            }
        }
        return hits;
    }

    size_t buckets() const { return m_buckets.size(); }
    /// The hash that a value was inserted with.
    K key_of(V value) const { return m_nodes[value].hash; }
    /// Adds the values of a bucket to `values`, in no particular order.
    void collect(size_t bucket, std::vector<V>& values) const {
        for (const node* at = chain(m_buckets[bucket]); at; at = at->next) values.push_back(number(*at));
    }
    /// Makes `values`, all of them inserted before into this bucket, the only ones that it has; lookups meet them in
    /// this order. Different threads may each do so for buckets of their own.
    void assign(size_t bucket, const std::vector<V>& values) {
        m_buckets[bucket] = 0;
        for (size_t i = values.size(); i-- > 0;) {
            node& entry = m_nodes[values[i]];
            std::atomic_ref<uint64_t> place(m_buckets[bucket]);
            push(place, entry, filter(entry.hash));
        }
    }

private:
    // The address of the first node stands in the low bits of a bucket, and above it which hashes there may be.
    static constexpr uint64_t address = (uint64_t{1} << 48) - 1;

    struct node {
        const node* next = nullptr;
        K hash = 0;
        V value = absent;
    };

    size_t mask() const { return m_buckets.size() - 1; }
    uint64_t filter(K key) const { return uint64_t{1} << (48 + (uint64_t{key} >> m_bits & 15)); }
    static const node* chain(uint64_t bucket) { return reinterpret_cast<const node*>(bucket & address); }
    static const node* find(const node* at, K key) {
        while (at && at->hash != key) at = at->next;
        return at;
    }
    V number(const node& entry) const { return static_cast<V>(&entry - m_nodes.data()); }

    void push(std::atomic_ref<uint64_t>& bucket, node& entry, uint64_t bit) {
        entry.value = number(entry);
        uint64_t seen = bucket.load(std::memory_order_relaxed);
        uint64_t wanted = 0;
        do {
            entry.next = chain(seen);
            wanted = reinterpret_cast<uint64_t>(&entry) | (seen & ~address) | bit;
        } while (!bucket.compare_exchange_weak(seen, wanted, std::memory_order_release, std::memory_order_relaxed));
    }

    unsigned m_bits;
    dense_vector<node> m_nodes;
    dense_vector<uint64_t> m_buckets;
};

}  // namespace qve
