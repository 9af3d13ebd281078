#include "primitives/pack.h"

#include <array>
#include <utility>

#include "primitives/status.h"
#include "system/QuillonException.h"

namespace qve {
namespace {

constexpr unsigned group = 32;  // values, which fill as many words as a value has bits

// With the width known, every shift below is a constant and the loop over a group unrolls.
template <unsigned Bits>
void pack(unsigned short n, unsigned* out, unsigned const* in) {
    for (unsigned first = 0; first + group <= n; first += group, in += group, out += Bits) {
        unsigned long long pending = 0;
        unsigned filled = 0;
        unsigned word = 0;
#pragma GCC unroll 32
        for (unsigned i = 0; i < group; ++i) {
            pending |= static_cast<unsigned long long>(in[i]) << filled;
            filled += Bits;
            if (filled >= 32) {
                out[word++] = static_cast<unsigned>(pending);
                pending >>= 32;
                filled -= 32;
            }
        }
    }
}

template <unsigned... Width>
constexpr std::array<pack_func, sizeof...(Width)> packers(std::integer_sequence<unsigned, Width...>) {
    return {pack<Width + 1>...};
}

}  // namespace

pack_func pack_func_ulng_col_ulng_col(unsigned bits) {
    static constexpr auto table = packers(std::make_integer_sequence<unsigned, 24>());
    if (bits < 1 || bits > table.size()) throw QVE_LogicError(status::pack_func, "pack_func_ulng_col_ulng_col");
    return table[bits - 1];
}

}  // namespace qve
