#include "primitives/hash_maps.h"

#include <algorithm>

#include "primitives/tokens.h"
#include "types/atom_hash.h"
#include "types/usrheap.h"
#include "types/usrtype.h"

namespace qve {
namespace {

unsigned hash_number(uint64_t width, unsigned long long token) {
    return width == 8 ? hash_mix64(token) : hash_mix32(static_cast<unsigned>(token));
}

}  // namespace

unsigned hash_text(unsigned n, output_column out, input_column a, bool constant, unsigned const* sel, bool fold) {
    n = rows_that_fit(n, out, sizeof(unsigned), sel);
    rows_that_fit(n, is_token_width(a.width));
    if (n == 0) return 0;
    unsigned* hashes = out.values<unsigned>();
    constexpr unsigned block = 1024;
    unsigned fresh[block];
    const token_view tokens(a, constant);
    // The type hashes rows from 0 on; so a block of tokens is brought together first.
    unsigned long long gathered[block];
    for (unsigned base = 0; base < n; base += block) {
        const unsigned rows = std::min(block, n - base);
        for (unsigned k = 0; k < rows; ++k) gathered[k] = tokens[sel ? sel[base + k] : base + k];
        if (a.heap) {
            a.heap->type()->hash(rows, {fresh, nullptr, sizeof(unsigned), rows, nullptr},
                                 {gathered, a.heap, sizeof gathered[0], rows, 0}, nullptr);
        } else {
            for (unsigned k = 0; k < rows; ++k) fresh[k] = hash_number(a.width, gathered[k]);
        }
        for (unsigned k = 0; k < rows; ++k) {
            unsigned& hash = hashes[sel ? sel[base + k] : base + k];
            hash = fold ? hash_combine(hash, fresh[k]) : fresh[k];
        }
    }
    return n;
}

}  // namespace qve
