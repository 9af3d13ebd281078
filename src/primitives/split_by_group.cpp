#include "primitives/split_by_group.h"

#include <immintrin.h>

#include <algorithm>
#include <bit>

#include "primitives/vector_level.h"

namespace qve {
namespace {

template <bool Selected>
[[gnu::target("avx512f")]] void split_wide(unsigned groupCount, unsigned count, const unsigned* groups,
                                           const unsigned* sel, unsigned stride, unsigned* rows, unsigned* counts) {
    constexpr unsigned lanes = 16;
    __m512i row = _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    const __m512i step = _mm512_set1_epi32(lanes);
    for (unsigned i = 0; i < count; i += lanes) {
        const unsigned left = count - i;
        const auto some = static_cast<__mmask16>(left >= lanes ? 0xFFFF : (1U << left) - 1);
        __m512i group;
        if constexpr (Selected) {
            row = _mm512_maskz_loadu_epi32(some, sel + i);
            group = _mm512_mask_i32gather_epi32(_mm512_setzero_si512(), some, row, groups, sizeof(unsigned));
        } else {
            group = _mm512_maskz_loadu_epi32(some, groups + i);
        }
        for (unsigned g = 0; g < groupCount; ++g) {
            const __mmask16 mine = _mm512_mask_cmpeq_epi32_mask(some, group, _mm512_set1_epi32(static_cast<int>(g)));
            _mm512_storeu_si512(rows + g * stride + counts[g], _mm512_maskz_compress_epi32(mine, row));
            counts[g] += static_cast<unsigned>(std::popcount(static_cast<unsigned>(mine)));
        }
        if constexpr (!Selected) row = _mm512_add_epi32(row, step);
    }
}

}  // namespace

bool split_by_group(unsigned groupCount, unsigned count, const unsigned* groups, const unsigned* sel, unsigned stride,
                    unsigned* rows, unsigned* counts) {
    if (current_vector_level() < vector_level::avx512) return false;
    std::fill_n(counts, groupCount, 0);
    if (sel) {
        split_wide<true>(groupCount, count, groups, sel, stride, rows, counts);
    } else {
        split_wide<false>(groupCount, count, groups, sel, stride, rows, counts);
    }
    return true;
}

}  // namespace qve
