#pragma once

#include "types/bit.h"

namespace qve {

/// Writes base + i for each of the `n` truth values that is true (bit 0 set; a null is not), ascending, and returns how
/// many. `out` has room for `n` positions; what lies behind the last one written may be overwritten within that room.
unsigned positions_of(unsigned n, const bit* hits, unsigned base, unsigned* out);

}  // namespace qve
