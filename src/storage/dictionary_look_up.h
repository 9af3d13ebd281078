#pragma once

#include <cstdint>

namespace qve {

/// The bytes of the numbers that `look_up` takes for a dictionary of 2^bits cells of `width` bytes: 1 or 4.
unsigned look_up_index_width(unsigned width, unsigned bits);

/// Writes the cells of a dictionary that `count` numbers stand for, with vector instructions where the processor has
/// them. The numbers are of look_up_index_width bytes and below 2^bits, which is how many cells `dictionary` holds.
void look_up(const void* numbers, unsigned count, const void* dictionary, unsigned width, unsigned bits, void* out);

}  // namespace qve
