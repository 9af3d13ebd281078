#include "primitives/run_heads.h"

#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cstdint>

#include "primitives/vector_level.h"

namespace qve {
namespace {

template <class T>
unsigned heads_from(unsigned first, unsigned n, const T* cells, unsigned* heads, unsigned found, unsigned most) {
    for (unsigned i = first; i < n && found <= most; ++i) {
        heads[found] = i;
        found += cells[i] != cells[i - 1];
    }
    return found;
}

// A register of cells against those one row before: as a rule all are equal.
template <class T>
[[gnu::target("avx2")]] unsigned heads_avx2(unsigned n, const T* cells, unsigned* heads, unsigned found,
                                            unsigned most) {
    constexpr unsigned lanes = sizeof(__m256i) / sizeof(T);
    unsigned i = 1;
    for (; i + lanes <= n && found <= most; i += lanes) {
        const __m256i here = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(cells + i));
        const __m256i before = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(cells + i - 1));
        __m256i equal;
        if constexpr (sizeof(T) == 1) equal = _mm256_cmpeq_epi8(here, before);
        if constexpr (sizeof(T) == 2) equal = _mm256_cmpeq_epi16(here, before);
        if constexpr (sizeof(T) == 4) equal = _mm256_cmpeq_epi32(here, before);
        if constexpr (sizeof(T) == 8) equal = _mm256_cmpeq_epi64(here, before);
        // A bit for each byte of a cell that differs.
        for (auto differs = ~static_cast<uint32_t>(_mm256_movemask_epi8(equal)); differs != 0;) {
            const unsigned lane = static_cast<unsigned>(std::countr_zero(differs)) / sizeof(T);
            heads[found++] = i + lane;
            differs &= ~(uint32_t{(uint64_t{1} << sizeof(T)) - 1} << lane * sizeof(T));
        }
    }
    return heads_from(i, n, cells, heads, found, most);
}

template <class T>
unsigned heads_of(unsigned n, const void* data, unsigned* heads, unsigned most) {
    if (n == 0) return 0;
    const T* const cells = static_cast<const T*>(data);
    heads[0] = 0;
    return current_vector_level() >= vector_level::avx2 ? heads_avx2(n, cells, heads, 1, most)
                                                        : heads_from(1, n, cells, heads, 1, most);
}

template <class T>
void spread(unsigned n, void* data, unsigned count, const unsigned* heads) {
    T* const cells = static_cast<T*>(data);
    for (unsigned k = 0; k < count; ++k) {
        const unsigned end = k + 1 < count ? heads[k + 1] : n;
        std::fill(cells + heads[k], cells + end, cells[heads[k]]);
    }
}

}  // namespace

unsigned run_heads(unsigned n, const void* cells, unsigned width, unsigned* heads, unsigned most) {
    switch (width) {
        case 1:
            return heads_of<uint8_t>(n, cells, heads, most);
        case 2:
            return heads_of<uint16_t>(n, cells, heads, most);
        case 4:
            return heads_of<uint32_t>(n, cells, heads, most);
        default:
            return heads_of<uint64_t>(n, cells, heads, most);
    }
}

void spread_heads(unsigned n, void* out, unsigned width, unsigned count, const unsigned* heads) {
    switch (width) {
        case 1:
            return spread<uint8_t>(n, out, count, heads);
        case 2:
            return spread<uint16_t>(n, out, count, heads);
        case 4:
            return spread<uint32_t>(n, out, count, heads);
        default:
            return spread<uint64_t>(n, out, count, heads);
    }
}

}  // namespace qve
