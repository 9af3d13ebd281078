#include "storage/dictionary_look_up.h"

#include <immintrin.h>

#include <algorithm>

#include "primitives/vector_level.h"
#include "storage/integer_width.h"

namespace qve {

namespace {

constexpr unsigned byteBits = 8;
constexpr unsigned shuffleEntries = 16;  // that one byte shuffle can choose from
constexpr unsigned shuffleBits = 6;      // of a dictionary for which shuffles beat one load after the other

template <class Number, class T>
void look_up_rows(const Number* numbers, unsigned first, unsigned count, const T* dictionary, T* out) {
    for (unsigned i = first; i < count; ++i) out[i] = dictionary[numbers[i]];
}

[[gnu::target("avx2"), gnu::always_inline]] inline __m256i load(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}
[[gnu::target("avx2"), gnu::always_inline]] inline void store(void* to, __m256i value) {
    _mm256_storeu_si256(static_cast<__m256i*>(to), value);
}

// 32 cells of a byte at a time: the dictionary stands in registers, 16 cells in each.
template <unsigned Tables>
[[gnu::target("avx2")]] void shuffle_bytes(const uint8_t* numbers, unsigned count, const char* dictionary,
                                           unsigned entries, char* out) {
    __m256i tables[Tables];
    for (unsigned t = 0; t < Tables; ++t) {
        alignas(16) char cells[shuffleEntries] = {};
        const unsigned first = t * shuffleEntries;
        if (first < entries) std::copy_n(dictionary + first, std::min(shuffleEntries, entries - first), cells);
        tables[t] = _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(cells)));
    }
    unsigned i = 0;
    for (; i + 32 <= count; i += 32) {
        const __m256i number = load(numbers + i);
        __m256i cells = _mm256_shuffle_epi8(tables[0], number);
        if constexpr (Tables > 1) {
            // A shuffle looks at the low four bits; which table they are for stands above.
            const __m256i table = _mm256_and_si256(_mm256_srli_epi16(number, 4), _mm256_set1_epi8(15));
            for (unsigned t = 1; t < Tables; ++t) {
                const __m256i mine = _mm256_cmpeq_epi8(table, _mm256_set1_epi8(static_cast<char>(t)));
                cells = _mm256_blendv_epi8(cells, _mm256_shuffle_epi8(tables[t], number), mine);
            }
        }
        store(out + i, cells);
    }
    look_up_rows(numbers, i, count, dictionary, out);
}

[[gnu::target("avx2")]] void gather(const uint32_t* numbers, unsigned count, const int* dictionary, int* out) {
    unsigned i = 0;
    for (; i + 8 <= count; i += 8) store(out + i, _mm256_i32gather_epi32(dictionary, load(numbers + i), sizeof(int)));
    look_up_rows(numbers, i, count, dictionary, out);
}

[[gnu::target("avx2")]] void gather(const uint32_t* numbers, unsigned count, const long long* dictionary,
                                    long long* out) {
    unsigned i = 0;
    for (; i + 4 <= count; i += 4) {
        const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(numbers + i));
        store(out + i, _mm256_i32gather_epi64(dictionary, four, sizeof(long long)));
    }
    look_up_rows(numbers, i, count, dictionary, out);
}

}  // namespace

unsigned look_up_index_width(unsigned width, unsigned bits) {
    return width == 1 && bits <= byteBits ? 1 : sizeof(uint32_t);
}

void look_up(const void* numbers, unsigned count, const void* dictionary, unsigned width, unsigned bits, void* out) {
    const bool wide = current_vector_level() >= vector_level::avx2;
    if (look_up_index_width(width, bits) == 1) {
        const auto* bytes = static_cast<const uint8_t*>(numbers);
        const auto* cells = static_cast<const char*>(dictionary);
        auto* const to = static_cast<char*>(out);
        const unsigned entries = 1u << bits;
        if (wide && entries <= shuffleEntries) return shuffle_bytes<1>(bytes, count, cells, entries, to);
        if (wide && bits <= shuffleBits) return shuffle_bytes<4>(bytes, count, cells, entries, to);
        return look_up_rows(bytes, 0, count, cells, to);
    }
    const auto* const number = static_cast<const uint32_t*>(numbers);
    with_width(width, [&](auto zero) {
        using T = decltype(zero);
        const auto* const cells = static_cast<const T*>(dictionary);
        if constexpr (sizeof(T) >= sizeof(int)) {
            if (wide) return gather(number, count, cells, static_cast<T*>(out));
        }
        look_up_rows(number, 0, count, cells, static_cast<T*>(out));
    });
}

}  // namespace qve
