#include "primitives/positions.h"

#include <immintrin.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "primitives/vector_level.h"

namespace qve {
namespace {

// For each byte of eight truth values, the numbers of the true ones, packed to the front.
struct packed_positions {
    alignas(64) std::array<std::array<uint8_t, 8>, 256> of{};

    constexpr packed_positions() {
        for (unsigned mask = 0; mask < 256; ++mask) {
            unsigned next = 0;
            for (unsigned i = 0; i < 8; ++i) {
                if (mask >> i & 1) of[mask][next++] = static_cast<uint8_t>(i);
            }
        }
    }
};
constexpr packed_positions packed;

unsigned one_by_one(unsigned from, unsigned n, const bit* hits, unsigned base, unsigned* out, unsigned count) {
    for (unsigned i = from; i < n; ++i) {
        out[count] = base + i;
        count += hits[i].value & 1;
    }
    return count;
}

// Eight positions are stored at a time, of which the true ones stay: out[count] with count <= i has room for all eight.
[[gnu::target("avx2")]] unsigned by_avx2(unsigned n, const bit* hits, unsigned base, unsigned* out) {
    unsigned count = 0;
    unsigned i = 0;
    for (; i + 32 <= n; i += 32) {
        const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(hits + i));
        uint32_t mask = static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_slli_epi16(bytes, 7)));
        for (unsigned part = 0; part < 32; part += 8, mask >>= 8) {
            const uint8_t eight = static_cast<uint8_t>(mask);
            const __m128i offsets = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(packed.of[eight].data()));
            const __m256i first = _mm256_set1_epi32(static_cast<int>(base + i + part));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + count),
                                _mm256_add_epi32(_mm256_cvtepu8_epi32(offsets), first));
            count += static_cast<unsigned>(std::popcount(eight));
        }
    }
    return one_by_one(i, n, hits, base, out, count);
}

[[gnu::target("sse4.1")]] unsigned by_sse41(unsigned n, const bit* hits, unsigned base, unsigned* out) {
    unsigned count = 0;
    unsigned i = 0;
    for (; i + 16 <= n; i += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(hits + i));
        uint32_t mask = static_cast<uint32_t>(_mm_movemask_epi8(_mm_slli_epi16(bytes, 7)));
        for (unsigned part = 0; part < 16; part += 8, mask >>= 8) {
            const uint8_t eight = static_cast<uint8_t>(mask);
            const __m128i offsets = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(packed.of[eight].data()));
            const __m128i first = _mm_set1_epi32(static_cast<int>(base + i + part));
            __m128i* target = reinterpret_cast<__m128i*>(out + count);
            _mm_storeu_si128(target, _mm_add_epi32(_mm_cvtepu8_epi32(offsets), first));
            _mm_storeu_si128(target + 1, _mm_add_epi32(_mm_cvtepu8_epi32(_mm_srli_si128(offsets, 4)), first));
            count += static_cast<unsigned>(std::popcount(eight));
        }
    }
    return one_by_one(i, n, hits, base, out, count);
}

}  // namespace

unsigned positions_of(unsigned n, const bit* hits, unsigned base, unsigned* out) {
    switch (current_vector_level()) {
        case vector_level::avx512:
        case vector_level::avx2:
            return by_avx2(n, hits, base, out);
        case vector_level::sse41:
            return by_sse41(n, hits, base, out);
        case vector_level::scalar:
            break;
    }
    return one_by_one(0, n, hits, base, out, 0);
}

}  // namespace qve
