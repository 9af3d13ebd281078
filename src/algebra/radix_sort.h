#pragma once

#include <cstdint>

namespace qve {

class ProgressCallback;

/// A key of 96 bits, and the number of its row.
struct wide_item {
    uint64_t high;  // the upper 64 bits of the key
    uint64_t low;   // its lower 32 bits, and in the lower half the number
};

/// Sorts numbers by their upper 32 bits, or items by their keys; equal ones keep their order where rows ascend.
/// `scratch` has room for as many. Throws CancelledException when `progress`, which may be null, says so; what is in
/// both vectors is undefined then.
void radix_sort(uint64_t count, uint64_t* items, uint64_t* scratch, const ProgressCallback* progress);
void radix_sort(uint64_t count, wide_item* items, wide_item* scratch, const ProgressCallback* progress);

/// The upper 32 bits of the number that would be at the place `rank` if they were sorted by them; `rank` is below
/// `count`. Cancelled likewise.
uint64_t radix_select(uint64_t count, const uint64_t* items, uint64_t rank, const ProgressCallback* progress);

}  // namespace qve
