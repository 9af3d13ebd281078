#include "primitives/add_by_group.h"

#include <immintrin.h>

#include "primitives/vector_level.h"

namespace qve {
namespace {

// Each group has a register of sums, and each row goes to all of them, under the mask of those that it belongs to.
template <unsigned Groups>
[[gnu::target("avx512f,avx512vl")]] unsigned add_wide(unsigned n, double* parts, unsigned stride, const double* values,
                                                      const unsigned* groups) {
    alignas(64) double lanes[sums_of_group];
    __m512d sums[Groups];
    for (unsigned g = 0; g < Groups; ++g) {
        for (unsigned s = 0; s < sums_of_group; ++s) lanes[s] = parts[s * stride + g];
        sums[g] = _mm512_load_pd(lanes);
    }
    unsigned i = 0;
    for (; i + sums_of_group <= n; i += sums_of_group) {
        const __m256i group = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(groups + i));
        const __m512d value = _mm512_loadu_pd(values + i);
        for (unsigned g = 0; g < Groups; ++g) {
            const __mmask8 mine = _mm256_cmpeq_epi32_mask(group, _mm256_set1_epi32(static_cast<int>(g)));
            sums[g] = _mm512_mask_add_pd(sums[g], mine, sums[g], value);
        }
    }
    for (unsigned g = 0; g < Groups; ++g) {
        _mm512_store_pd(lanes, sums[g]);
        for (unsigned s = 0; s < sums_of_group; ++s) parts[s * stride + g] = lanes[s];
    }
    return i;
}

}  // namespace

unsigned add_by_group(unsigned n, double* parts, unsigned stride, const double* values, const unsigned* groups,
                      unsigned count) {
    if (current_vector_level() < vector_level::avx512) return 0;
    if (count <= 4) return add_wide<4>(n, parts, stride, values, groups);
    if (count <= most_added_groups) return add_wide<most_added_groups>(n, parts, stride, values, groups);
    return 0;
}

}  // namespace qve
