#pragma once

#include <vector>

#include "types/usraccel.h"

namespace qve {

class usrtype;

/// Finds values in a sorted dictionary by binary search.
class compaccel : public usraccel {
public:
    /// `distinct`: no two entries are equal values, so the search stops at the first hit.
    compaccel(const usrtype* type, bool distinct) : m_type(type), m_distinct(distinct) {}

    bool distinct() const override { return m_distinct; }
    bool comparable() const override { return true; }
    bool complete() const override { return true; }
    unsigned long long cardinality() const override { return m_count; }
    void build(const usrheap& heap) override;
    /// Of equal entries the first.
    unsigned long long find(const usrheap& heap, const usratom& atom) const override;
    using usraccel::find;

    /// The token of the first entry that is not below the value; the heap's next() when all are below.
    unsigned long long lookup(const usrheap& heap, const usratom& atom) const;

protected:
    const usrtype* m_type;
    unsigned long long m_count = 0;

private:
    bool m_distinct;
    // The token of every 16th entry of a heap whose entries vary in length; of fixed ones the token is the ordinal.
    std::vector<unsigned long long> m_samples;
};

}  // namespace qve
