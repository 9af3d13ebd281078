#pragma once

#include "types/usraccel.h"

namespace qve {

class usrtype;

/// Watches over an ascending dictionary while it is built: each new value must be above the last. It finds only the
/// last value, which is enough for a writer whose values come sorted.
class ascaccel : public usraccel {
public:
    explicit ascaccel(const usrtype* type) : m_type(type) {}

    bool distinct() const override { return true; }
    bool comparable() const override { return true; }
    bool complete() const override { return true; }
    unsigned long long cardinality() const override { return m_count; }
    /// Throws QVE_InvalidArgument (status::ascaccel_insert) when the entries do not ascend.
    void build(const usrheap& heap) override;
    unsigned long long find(const usrheap& heap, const usratom& atom) const override;
    using usraccel::find;
    void admit(const usratom& atom) const override;
    /// Throws as build does.
    void insert(const usrheap& heap, const usratom& atom, unsigned long long token) override;

private:
    const usrtype* m_type;
    usratom m_lastAtom;
    unsigned long long m_count = 0;
};

}  // namespace qve
