#pragma once

#include <string_view>

#include "types/token_index.h"
#include "types/usraccel.h"

namespace qve {

class usrtype;

/// Finds values through a hash table from their 32-bit hash to their token. Values that differ in their bytes and are
/// equal only to a collation are different entries, so that storing text never changes it; then the entries are not
/// distinct.
class hashaccel : public usraccel {
public:
    /// For a heap of `type`; `expected` entries will come.
    explicit hashaccel(const usrtype* type, size_t expected = 0);

    bool distinct() const override { return m_distinct; }
    bool complete() const override { return true; }
    unsigned long long cardinality() const override { return m_cardinality; }
    void build(const usrheap& heap) override;
    unsigned long long find(const usrheap& heap, const usratom& atom) const override;
    using usraccel::find;
    void insert(const usrheap& heap, const usratom& atom, unsigned long long token) override;
    hashaccel* hashed() override { return this; }
    /// True when equal values have the same bytes.
    bool exact() const { return m_exact; }

    /// The hash under which a value stands here; equal values have equal keys.
    unsigned key(std::string_view bytes) const;
    /// The token of the entry with these very bytes, whose key the caller has; absent when there is none.
    unsigned long long find_bytes(const usrheap& heap, std::string_view bytes, unsigned key) const;
    /// insert for a caller that has the key.
    void insert_bytes(const usrheap& heap, std::string_view bytes, unsigned key, unsigned long long token);
    /// Brings the places of a key into the cache, ahead of first_candidate.
    void prefetch(unsigned key) const { m_table.prefetch(key); }
    /// The entry most likely to be the one of a key; absent when there is none.
    unsigned long long first_candidate(unsigned key) const { return m_table.first(key); }
    /// The token of the entry of a key for whose token matches(token) is true; absent when there is none.
    template <class Matches>
    unsigned long long find_matching(unsigned key, Matches matches) const {
        return m_table.find_if(key, matches);
    }
    /// What the index takes in memory.
    uint64_t bytes() const { return m_table.bytes(); }

private:
    void add(unsigned key, unsigned long long token);
    unsigned long long find_equal(const usrheap& heap, std::string_view bytes, unsigned key) const;

    const usrtype* m_type;
    bool m_exact;
    bool m_distinct = true;
    unsigned long long m_cardinality = 0;
    token_index m_table;
};

}  // namespace qve
