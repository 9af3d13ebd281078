#include "primitives/blend.h"

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "primitives/vector_level.h"

namespace qve {
namespace {

template <class T, bool Single>
void blend_rows(unsigned first, unsigned n, T* out, const bit* hits, const T* from) {
    for (unsigned i = first; i < n; ++i) out[i] = hits[i].value & 1 ? from[Single ? 0 : i] : out[i];
}

// The bit of each row in the sign of its cell, where the blend looks for it. `hits` has as many as a register cells.
template <class T>
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i mask_of(const bit* hits) {
    if constexpr (sizeof(T) == 1) {
        return _mm256_slli_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(hits)), 7);
    } else if constexpr (sizeof(T) == 2) {
        const __m256i wide = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(hits)));
        return _mm256_srai_epi16(_mm256_slli_epi16(wide, 15), 15);  // the blend goes by bytes
    } else if constexpr (sizeof(T) == 4) {
        return _mm256_slli_epi32(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(hits))), 31);
    } else {
        int four;
        std::memcpy(&four, hits, sizeof(four));
        return _mm256_slli_epi64(_mm256_cvtepu8_epi64(_mm_cvtsi32_si128(four)), 63);
    }
}

template <class T>
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i spread(T value) {
    if constexpr (sizeof(T) == 1) return _mm256_set1_epi8(static_cast<char>(value));
    if constexpr (sizeof(T) == 2) return _mm256_set1_epi16(static_cast<short>(value));
    if constexpr (sizeof(T) == 4) return _mm256_set1_epi32(static_cast<int>(value));
    if constexpr (sizeof(T) == 8) return _mm256_set1_epi64x(static_cast<long long>(value));
}

template <class T>
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i choose(__m256i no, __m256i yes, __m256i mask) {
    if constexpr (sizeof(T) == 8) {
        return _mm256_castpd_si256(
            _mm256_blendv_pd(_mm256_castsi256_pd(no), _mm256_castsi256_pd(yes), _mm256_castsi256_pd(mask)));
    } else if constexpr (sizeof(T) == 4) {
        return _mm256_castps_si256(
            _mm256_blendv_ps(_mm256_castsi256_ps(no), _mm256_castsi256_ps(yes), _mm256_castsi256_ps(mask)));
    } else {
        return _mm256_blendv_epi8(no, yes, mask);
    }
}

template <class T, bool Single>
[[gnu::target("avx2")]] void blend_avx2(unsigned n, T* out, const bit* hits, const T* from) {
    constexpr unsigned lanes = sizeof(__m256i) / sizeof(T);
    const __m256i one = spread(from[0]);
    unsigned i = 0;
    for (; i + lanes <= n; i += lanes) {
        __m256i* const to = reinterpret_cast<__m256i*>(out + i);
        const __m256i yes = Single ? one : _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from + i));
        _mm256_storeu_si256(to, choose<T>(_mm256_loadu_si256(to), yes, mask_of<T>(hits + i)));
    }
    blend_rows<T, Single>(i, n, out, hits, from);
}

template <class T>
void blend(unsigned n, void* out, const bit* hits, const void* from, bool single) {
    T* const to = static_cast<T*>(out);
    const T* const cells = static_cast<const T*>(from);
    if (current_vector_level() >= vector_level::avx2) {
        single ? blend_avx2<T, true>(n, to, hits, cells) : blend_avx2<T, false>(n, to, hits, cells);
    } else {
        single ? blend_rows<T, true>(0, n, to, hits, cells) : blend_rows<T, false>(0, n, to, hits, cells);
    }
}

}  // namespace

void blend_cells(unsigned n, unsigned width, void* out, const bit* hits, const void* from, bool single) {
    if (n == 0) return;
    switch (width) {
        case 1:
            return blend<uint8_t>(n, out, hits, from, single);
        case 2:
            return blend<uint16_t>(n, out, hits, from, single);
        case 4:
            return blend<uint32_t>(n, out, hits, from, single);
        default:
            return blend<uint64_t>(n, out, hits, from, single);
    }
}

}  // namespace qve
