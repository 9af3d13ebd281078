#pragma once

#include <cstdint>

#include "storage/stream/DataStream.h"
#include "types/input_column.h"
#include "types/output_column.h"
#include "types/usratom.h"

namespace qve {

class hashaccel;
class usrheap;

/// An index over the bytes of a heap, which finds the token of a value. It is attached to the heap's stream and shared
/// by the stream's forks, so it holds no stream itself: each operation reads through the heap of the asking thread.
/// Finding is safe during other finding; building and inserting belong to the one writer. The base finds nothing and
/// accepts nothing.
class usraccel : public StreamAccelerator {
public:
    /// The token that means "not present".
    static constexpr unsigned long long absent = ~0ULL;

    /// True when no two entries are equal values of the type.
    virtual bool distinct() const { return false; }
    /// True when tokens compare as their values do.
    virtual bool comparable() const { return false; }
    /// True when every entry of the heap is known here.
    virtual bool complete() const { return false; }
    /// The token of the last entry; absent when there is none.
    virtual unsigned long long last() const { return m_last; }
    /// The value of the last entry; a null when there is none.
    virtual usratom last_atom(const usrheap& heap) const;
    /// How many entries there are, the null not counted.
    virtual unsigned long long cardinality() const { return 0; }
    /// Reads all entries of the heap.
    virtual void build(const usrheap& heap);
    /// The token of an entry equal to a value, which is not null and of the heap's type; absent when there is none. Of
    /// several equal entries, one with the value's very bytes is preferred.
    virtual unsigned long long find(const usrheap& heap, const usratom& atom) const;
    /// The tokens of the values of a vector, of the heap's type, in the width of `out`; all ones for the absent and for
    /// nulls.
    void find(const usrheap& heap, unsigned count, output_column out, input_column in, const unsigned* selection) const;
    /// Called before an entry is appended; throws when it may not come next.
    virtual void admit(const usratom& atom) const;
    /// Learns of the entry that was just appended.
    virtual void insert(const usrheap& heap, const usratom& atom, unsigned long long token);
    /// This, if it is a hashaccel.
    virtual hashaccel* hashed() { return nullptr; }

protected:
    unsigned long long m_last = absent;
};

}  // namespace qve
