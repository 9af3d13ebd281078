#pragma once

#include "types/cuckoo_hash.h"
#include "types/usraccel.h"

namespace qve {

/// Finds values by their bytes through a hash table. Values that only a collation calls equal are different entries, so
/// that storing text never changes it; then the entries are not distinct.
class hashaccel : public usraccel {
public:
    /// `expected` entries will come.
    explicit hashaccel(size_t expected = 0);

    bool distinct() const override { return m_distinct; }
    bool complete() const override { return true; }
    unsigned long long cardinality() const override { return m_cardinality; }
    void build(const usrheap& heap) override;
    unsigned long long find(const usrheap& heap, const usratom& atom) const override;
    using usraccel::find;
    void insert(const usrheap& heap, const usratom& atom, unsigned long long token) override;

    /// The hash under which a value stands here.
    static unsigned key(const char* data, uint64_t length);
    /// find and insert for a caller that has the key already.
    unsigned long long find(const usrheap& heap, const char* data, uint64_t length, unsigned key) const;
    void insert(unsigned key, unsigned long long token);
    /// Brings the places of a key into the cache, ahead of find.
    void prefetch(unsigned key) const { m_table.prefetch(key); }

private:
    cuckoo_hash<unsigned, unsigned long long> m_table;
    unsigned long long m_cardinality = 0;
    bool m_distinct = true;
};

}  // namespace qve
