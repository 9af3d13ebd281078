#pragma once

#include <cstddef>

namespace qve {

/// Sorts `n` unsigned keys ascending and moves an index in step. `index` may be null for keys alone. Quicksort with the
/// median of three, heapsort where it degenerates, insertion sort at the end; with more than one worker the two halves
/// of a partition are sorted at the same time. Instantiated for keys of every width with an index of every width.
template <class Key, class Index>
void introsort(unsigned workers, size_t n, Key* keys, Index* index);

}  // namespace qve
