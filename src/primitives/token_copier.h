#pragma once

#include <array>

#include "types/heap_reader.h"
#include "types/usratom.h"

namespace qve {

class usrheap;

/// Carries values from heap to heap, as tokens: within one heap the token itself, else the token under which the other
/// heap stores the value. Remembers what it carried, since columns repeat values. For one vector, on one thread.
class token_copier {
public:
    token_copier(const usrheap* from, usrheap* to);

    unsigned long long operator()(unsigned long long token) { return m_same ? token : carried(token); }
    /// True when tokens are copied as they are.
    bool same_heap() const { return m_same; }

private:
    struct entry {
        unsigned long long from = ~0ULL;  // a null is a null in every heap
        unsigned long long to = ~0ULL;
    };

    unsigned long long carried(unsigned long long token);

    const usrheap* m_from;
    usrheap* m_to;
    bool m_same;
    heap_reader m_reader;
    usratom m_atom;
    std::array<entry, 256> m_entries;
};

}  // namespace qve
