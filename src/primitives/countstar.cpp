#include <immintrin.h>

#include <bit>
#include <numeric>

#include "primitives/aggregate_kernel.h"

namespace qve {
namespace {

constexpr unsigned few_groups = 64;
constexpr unsigned copies = 4;
// Up to this many groups each row is compared with all of them.
constexpr unsigned fewest_groups = 8;

// Each group has several counters: one that was just raised is not ready to be raised again at once.
void count_few(unsigned n, bigint* counts, unsigned const* group, unsigned const* sel, unsigned highest) {
    unsigned parts[copies][few_groups];
    for (auto& copy : parts) std::fill_n(copy, highest + 1, 0u);
    unsigned k = 0;
    for (; k + copies <= n; k += copies) {
        for (unsigned copy = 0; copy < copies; ++copy) ++parts[copy][group[sel ? sel[k + copy] : k + copy]];
    }
    for (; k < n; ++k) ++parts[0][group[sel ? sel[k] : k]];
    for (unsigned g = 0; g <= highest; ++g) counts[g] += bigint{parts[0][g]} + parts[1][g] + parts[2][g] + parts[3][g];
}

// Rows from 0 on, of at most Groups groups: each group has a register of counters, and each row is compared with all.
template <unsigned Groups>
[[gnu::target("avx2")]] void count_fewest(unsigned n, bigint* counts, unsigned const* group) {
    constexpr unsigned lanes = 8;
    __m256i parts[Groups];
    for (__m256i& part : parts) part = _mm256_setzero_si256();
    unsigned k = 0;
    for (; k + lanes <= n; k += lanes) {
        const __m256i groups = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(group + k));
        for (unsigned g = 0; g < Groups; ++g) {
            const __m256i mine = _mm256_cmpeq_epi32(groups, _mm256_set1_epi32(static_cast<int>(g)));
            parts[g] = _mm256_sub_epi32(parts[g], mine);
        }
    }
    for (unsigned g = 0; g < Groups; ++g) {
        unsigned sums[lanes];
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(sums), parts[g]);
        const bigint sum = std::accumulate(sums, sums + lanes, bigint{0});
        if (sum > 0) counts[g] += sum;  // of groups beyond the last there is no counter
    }
    for (; k < n; ++k) ++counts[group[k]];
}

// The same by the bits that a comparison of 16 rows gives.
template <unsigned Groups>
[[gnu::target("avx512f,popcnt")]] void count_fewest_wide(unsigned n, bigint* counts, unsigned const* group,
                                                         unsigned groups) {
    constexpr unsigned lanes = 16;
    unsigned sums[Groups] = {};
    const auto count = [&](__m512i numbers, __mmask16 some) __attribute__((always_inline, target("avx512f,popcnt"))) {
#pragma GCC unroll 8
        for (unsigned g = 0; g < Groups; ++g) {
            const __mmask16 mine = _mm512_mask_cmpeq_epi32_mask(some, numbers, _mm512_set1_epi32(static_cast<int>(g)));
            sums[g] += static_cast<unsigned>(std::popcount(static_cast<unsigned>(mine)));
        }
    };
    unsigned k = 0;
    for (; k + lanes <= n; k += lanes) count(_mm512_loadu_si512(group + k), 0xFFFF);
    const auto some = static_cast<__mmask16>((1U << (n - k)) - 1);
    count(_mm512_maskz_loadu_epi32(some, group + k), some);
    for (unsigned g = 0; g < groups; ++g) counts[g] += sums[g];
}

template <class Group>
struct countstar_kernel {
    static unsigned run(unsigned n, output_column out, input_column groups, unsigned const* sel) {
        rows_that_fit(n, out.width == sizeof(bigint) && groups.width == sizeof(unsigned));
        if (n == 0) return 0;
        bigint* counts = out.values<bigint>();
        unsigned const* group = groups.values<unsigned>();
        if (is_val<Group> || groups.flags & column_flags::constant) {
            rows_that_fit(n, *group < out.limit);
            counts[*group] += n;
        } else {
            const unsigned highest = highest_group(n, group, sel);
            rows_that_fit(n, highest < out.limit);
            const bool wide = !sel && current_vector_level() >= vector_level::avx2;
            if (wide && highest < fewest_groups && current_vector_level() == vector_level::avx512) {
                const auto count = highest < 5 ? count_fewest_wide<5> : count_fewest_wide<fewest_groups>;
                count(n, counts, group, highest + 1);
            } else if (wide && highest < 4) {
                count_fewest<4>(n, counts, group);
            } else if (wide && highest < fewest_groups) {
                count_fewest<fewest_groups>(n, counts, group);
            } else if (highest < few_groups && n >= few_groups) {
                count_few(n, counts, group, sel, highest);
            } else {
                for (unsigned k = 0; k < n; ++k) ++counts[group[sel ? sel[k] : k]];
            }
        }
        if (out.flags) *out.flags |= column_flags::not_null;
        return n;
    }
};

constexpr kernel_entry<unary_func> entries[] = {
    {countstar_kernel<col<unsigned>>::run, L"bigint", {L"ulng"}, {L"col"}},
    {countstar_kernel<val<unsigned>>::run, L"bigint", {L"ulng"}, {L"val"}},
};

const registration registered(primitive::klassAggregate, L"countstar",
                              std::span<const kernel_entry<unary_func>>(entries));

}  // namespace

void define_countstar() {}

}  // namespace qve
