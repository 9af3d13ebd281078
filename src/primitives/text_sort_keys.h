#pragma once

#include <optional>
#include <string>
#include <vector>

#include "primitives/thread_collation.h"
#include "types/heap_reader.h"
#include "types/usratom.h"

namespace qve {

/// The values of a heap as byte strings whose order is that of the heap's type, nulls first. For one vector, on one
/// thread. Without a heap the tokens themselves are ordered.
class text_sort_keys {
public:
    explicit text_sort_keys(const usrheap* heap);

    /// The key of a token. It never is empty.
    std::string of(unsigned long long token);

private:
    const usrheap* m_heap;
    heap_reader m_values;
    std::optional<thread_collation> m_collation;
    usratom m_atom;
    std::vector<unsigned char> m_key;
};

}  // namespace qve
