#pragma once

namespace qve {

/// Packs `n` values (a multiple of 32) of b bits each, from the least significant bit of each word up; 32 values fill b
/// words of `out`. Bits of a value above b must be 0.
using pack_func = void (*)(unsigned short n, unsigned* out, unsigned const* in);

/// The packer for `bits` from 1 to 24; any other number raises logic error 40676.
pack_func pack_func_ulng_col_ulng_col(unsigned bits);

}  // namespace qve
