#pragma once

#include <cstdint>

namespace qve {

/// Unpacks groups of 32 values, packed from the least significant bit of each little-endian 32-bit word up, and adds
/// `base` (its low bytes, with wrap-around) to each. Writes 32 * `groups` values of the function's width to `out`.
/// Reads no byte from `in_end` on; it may be right behind the groups, and is faster when 16 bytes lie between.
/// `in` and `out` need no alignment beyond that of the value for `out`.
using unpack_function = void (*)(const char* in, const char* in_end, uint64_t groups, uint64_t base, void* out);

/// The widest packed value, in bits. Any value of up to 24 bits lies within four bytes.
inline constexpr unsigned maximal_packed_bits = 24;

/// The unpacker for values of `width` bytes (1, 2, 4 or 8) from `bits` bits. Throws QVE_DomainError 40172 when bits are
/// not from 1 to 24. Chosen by the processor, so keep it rather than ask for each block.
unpack_function decode_functype_bits(unsigned width, unsigned bits);

}  // namespace qve
