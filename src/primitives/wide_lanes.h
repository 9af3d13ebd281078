#pragma once

#include <immintrin.h>

#include <bit>
#include <cstdint>
#include <type_traits>

#include "primitives/null_lanes.h"
#include "types/datatraits.h"

namespace qve {

/// What an operation of has_null_lanes does to numbers, for units of 512 bits.
enum class wide_merge { add, count, least, greatest };

/// Whether wide_lanes is there for an operation with result R over values A. The least of doubles has rules of its own
/// for what is no number.
template <class Op, class R, class A>
constexpr bool has_wide_lanes() {
    if constexpr (has_null_lanes<Op, R, A>) {
        constexpr bool adds = Op::wide == wide_merge::add;
        return Op::wide == wide_merge::count || (std::is_integral_v<R> && std::is_integral_v<A>) ||
               (adds && std::is_same_v<R, double> && std::is_same_v<A, double>);
    } else {
        return false;
    }
}

/// null_lanes for units of 512 bits, where a null is masked out. The sums of doubles have the same lanes there; whole
/// numbers, whose order does not matter, have more.
template <class Op, class R, class A>
struct wide_lanes {
    static constexpr unsigned rows_in_turn = null_lanes<Op, R, A>::rows_in_turn;

    /// As null_lanes::merge_avx2.
    [[gnu::target("avx512f,avx512dq,avx512bw,avx512vl")]] static bool merge(unsigned n, const A* rows, R* parts) {
        constexpr unsigned registers = lanes / width;
        alignas(64) R all[lanes];
        for (unsigned l = 0; l < lanes; ++l) all[l] = l < rows_in_turn ? parts[l] : Op::template identity<R>();
        __m512i merged[registers];
        for (unsigned r = 0; r < registers; ++r) merged[r] = _mm512_load_si512(all + r * width);
        unsigned values = 0;
        unsigned k = 0;
        for (; k + lanes <= n; k += lanes) {
#pragma GCC unroll 4
            for (unsigned r = 0; r < registers; ++r) values |= merge_register(merged[r], rows + k + r * width);
        }
        for (unsigned r = 0; r < registers; ++r) _mm512_store_si512(all + r * width, merged[r]);
        bool any = values != 0;
        for (; k < n; ++k) {
            if (is_null(rows[k])) continue;
            all[k % lanes] = Op::merge(all[k % lanes], Op::template lift<R>(rows[k]));
            any = true;
        }
        for (unsigned l = 0; l < lanes; ++l) {
            R& part = parts[l % rows_in_turn];
            part = l < rows_in_turn ? all[l] : Op::merge(part, all[l]);
        }
        return any;
    }

private:
    static constexpr unsigned width = 64 / sizeof(R);
    static constexpr unsigned lanes = std::is_floating_point_v<R> ? rows_in_turn : 32;
    static constexpr bool narrow = sizeof(A) < sizeof(R);  // 4 bytes to 8

    // Merges `width` rows, and returns the mask of those that are not null.
    [[gnu::target("avx512f,avx512dq,avx512bw,avx512vl"), gnu::always_inline]] static inline unsigned merge_register(
        __m512i& merged, const A* rows) {
        constexpr auto null = std::bit_cast<std::make_signed_t<unsigned_of<A>>>(datatraits<A>::null);
        unsigned mask = 0;
        __m512i values;
        if constexpr (narrow) {
            const __m256i cells = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(rows));
            mask = _mm256_cmpneq_epi32_mask(cells, _mm256_set1_epi32(null));
            // Under a mask, as the compiler takes the form without one for a use of what was not set.
            const auto lanes_taken = static_cast<__mmask8>(mask);
            values = std::is_signed_v<A> ? _mm512_maskz_cvtepi32_epi64(lanes_taken, cells)
                                         : _mm512_maskz_cvtepu32_epi64(lanes_taken, cells);
        } else {
            values = _mm512_loadu_si512(rows);
            if constexpr (sizeof(A) == 4) {
                mask = _mm512_cmpneq_epi32_mask(values, _mm512_set1_epi32(null));
            } else {
                mask = _mm512_cmpneq_epi64_mask(values, _mm512_set1_epi64(null));
            }
        }
        if constexpr (Op::wide == wide_merge::count) {
            merged = _mm512_mask_add_epi64(merged, static_cast<__mmask8>(mask), merged, _mm512_set1_epi64(1));
        } else if constexpr (std::is_same_v<R, double>) {
            const __m512d sums = _mm512_castsi512_pd(merged);
            merged = _mm512_castpd_si512(
                _mm512_mask_add_pd(sums, static_cast<__mmask8>(mask), sums, _mm512_castsi512_pd(values)));
        } else if constexpr (sizeof(R) == 8) {
            merged = merge_longs(merged, static_cast<__mmask8>(mask), values);
        } else {
            merged = merge_words(merged, static_cast<__mmask16>(mask), values);
        }
        return mask;
    }
    [[gnu::target("avx512f,avx512dq,avx512bw,avx512vl"), gnu::always_inline]] static inline __m512i merge_longs(
        __m512i merged, __mmask8 mask, __m512i values) {
        constexpr bool greatest = Op::wide == wide_merge::greatest;
        if constexpr (Op::wide == wide_merge::add) return _mm512_mask_add_epi64(merged, mask, merged, values);
        if constexpr (std::is_signed_v<R>) {
            return greatest ? _mm512_mask_max_epi64(merged, mask, merged, values)
                            : _mm512_mask_min_epi64(merged, mask, merged, values);
        } else {
            return greatest ? _mm512_mask_max_epu64(merged, mask, merged, values)
                            : _mm512_mask_min_epu64(merged, mask, merged, values);
        }
    }
    [[gnu::target("avx512f,avx512dq,avx512bw,avx512vl"), gnu::always_inline]] static inline __m512i merge_words(
        __m512i merged, __mmask16 mask, __m512i values) {
        constexpr bool greatest = Op::wide == wide_merge::greatest;
        if constexpr (Op::wide == wide_merge::add) return _mm512_mask_add_epi32(merged, mask, merged, values);
        if constexpr (std::is_signed_v<R>) {
            return greatest ? _mm512_mask_max_epi32(merged, mask, merged, values)
                            : _mm512_mask_min_epi32(merged, mask, merged, values);
        } else {
            return greatest ? _mm512_mask_max_epu32(merged, mask, merged, values)
                            : _mm512_mask_min_epu32(merged, mask, merged, values);
        }
    }
};

}  // namespace qve
