#pragma once

#include <cstdint>

namespace qve {

/// Whether the first `count` cells of `width` bytes (1, 2, 4 or 8) are all the same, bit for bit. Ends early where they
/// are not.
bool is_uniform(uint64_t count, const void* cells, unsigned width);

}  // namespace qve
