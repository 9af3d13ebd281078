#pragma once

#include <cstdint>

namespace qve {

class ProgressCallback;

/// Sorts numbers by their upper 32 bits. `scratch` has room for as many. Throws CancelledException when `progress`,
/// which may be null, says so; what is in both vectors is undefined then.
void radix_sort(uint64_t count, uint64_t* items, uint64_t* scratch, const ProgressCallback* progress);

}  // namespace qve
