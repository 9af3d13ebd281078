#include "primitives/add_by_group.h"

#include <immintrin.h>

#include <algorithm>
#include <bit>

#include "primitives/vector_level.h"
#include "types/datatraits.h"

namespace qve {
namespace {

// Each group has a register of sums, and each row goes to all of them, under the mask of those that it belongs to.
// Without `Seen` there are no nulls; with it they are in no group, and the groups of the others become its bits.
template <unsigned Groups, class... Seen>
[[gnu::target("avx512f,avx512vl")]] unsigned add_wide(unsigned n, double* parts, unsigned stride, const double* values,
                                                      const unsigned* groups, Seen&... seen) {
    constexpr bool nulls = sizeof...(Seen) > 0;
    constexpr auto null = std::bit_cast<long long>(datatraits<double>::null);
    __mmask8 present[Groups] = {};
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
        __mmask8 valid = 0xFF;
        if constexpr (nulls) valid = _mm512_cmpneq_epi64_mask(_mm512_castpd_si512(value), _mm512_set1_epi64(null));
        for (unsigned g = 0; g < Groups; ++g) {
            const __mmask8 mine = _mm256_mask_cmpeq_epi32_mask(valid, group, _mm256_set1_epi32(static_cast<int>(g)));
            if constexpr (nulls) present[g] = static_cast<__mmask8>(present[g] | mine);
            sums[g] = _mm512_mask_add_pd(sums[g], mine, sums[g], value);
        }
    }
    for (unsigned g = 0; g < Groups; ++g) {
        _mm512_store_pd(lanes, sums[g]);
        for (unsigned s = 0; s < sums_of_group; ++s) parts[s * stride + g] = lanes[s];
        ((seen |= uint64_t{present[g] != 0} << g), ...);
    }
    return i;
}

template <class... Seen>
unsigned add_by_group_wide(unsigned n, double* parts, unsigned stride, const double* values, const unsigned* groups,
                           unsigned count, Seen&... seen) {
    if (current_vector_level() < vector_level::avx512) return 0;
    switch (std::max(count, 4U)) {
        case 4:
            return add_wide<4>(n, parts, stride, values, groups, seen...);
        case 5:
            return add_wide<5>(n, parts, stride, values, groups, seen...);
        case 6:
            return add_wide<6>(n, parts, stride, values, groups, seen...);
        case 7:
        case most_added_groups:
            return add_wide<most_added_groups>(n, parts, stride, values, groups, seen...);
        default:
            return 0;
    }
}

}  // namespace

unsigned add_by_group(unsigned n, double* parts, unsigned stride, const double* values, const unsigned* groups,
                      unsigned count) {
    return add_by_group_wide(n, parts, stride, values, groups, count);
}

unsigned add_nullable_by_group(unsigned n, double* parts, unsigned stride, const double* values, const unsigned* groups,
                               unsigned count, uint64_t& seen) {
    return add_by_group_wide(n, parts, stride, values, groups, count, seen);
}

}  // namespace qve
