#include "storage/bit_unpacking.h"

#include <immintrin.h>

#include <array>
#include <cstring>
#include <type_traits>
#include <utility>

#include "storage/status.h"
#include "system/CPU.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

constexpr unsigned groupLength = 32;

template <unsigned Bits>
constexpr uint32_t mask = (uint32_t{1} << Bits) - 1;

// The I-th value of a group. All positions are constants, so that each value is a shift or two and a mask.
template <unsigned Bits, unsigned I>
[[gnu::always_inline]] inline uint32_t extract(const uint32_t* words) {
    constexpr unsigned word = I * Bits / 32;
    constexpr unsigned offset = I * Bits % 32;
    if constexpr (offset + Bits <= 32)
        return (words[word] >> offset) & mask<Bits>;
    else
        return ((words[word] >> offset) | (words[word + 1] << (32 - offset))) & mask<Bits>;
}

template <class T, unsigned Bits, unsigned... I>
[[gnu::always_inline]] inline void unpack_group(const uint32_t* words, T base, T* out,
                                                std::integer_sequence<unsigned, I...>) {
    ((out[I] = static_cast<T>(base + extract<Bits, I>(words))), ...);
}

template <class T, unsigned Bits>
void unpack(const char* in, const char*, uint64_t groups, uint64_t base, void* out) {
    T* values = static_cast<T*>(out);
    for (; groups != 0; --groups, in += Bits * 4, values += groupLength) {
        uint32_t words[Bits];
        std::memcpy(words, in, sizeof(words));
        unpack_group<T, Bits>(words, static_cast<T>(base), values, std::make_integer_sequence<unsigned, groupLength>());
    }
}

// Eight values fill Bits bytes, and each lies within four bytes. So one shuffle brings to each 32-bit lane the four
// bytes of its value, one variable shift puts the value at the bottom, and one mask cuts it out.
template <unsigned Bits>
struct octet {
    static constexpr unsigned upper = Bits * 4 / 8;  // the byte where the fifth value begins
    static constexpr unsigned bit_of(unsigned lane) { return lane < 4 ? lane * Bits : lane * Bits - upper * 8; }

    static constexpr std::array<char, 32> make_shuffle() {
        std::array<char, 32> bytes{};
        for (unsigned lane = 0; lane < 8; ++lane) {
            for (unsigned byte = 0; byte < 4; ++byte)
                bytes[lane * 4 + byte] = static_cast<char>(bit_of(lane) / 8 + byte);
        }
        return bytes;
    }
    static constexpr std::array<uint32_t, 8> make_shifts() {
        std::array<uint32_t, 8> shifts{};
        for (unsigned lane = 0; lane < 8; ++lane) shifts[lane] = bit_of(lane) % 8;
        return shifts;
    }
    alignas(32) static constexpr std::array<char, 32> shuffle = make_shuffle();
    alignas(32) static constexpr std::array<uint32_t, 8> shifts = make_shifts();
};

// Bytes that reading an octet may touch behind it.
constexpr unsigned octetSlack = 16;

template <unsigned Bits>
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i unpack_octet(const char* in, uint32_t valueMask) {
    const __m128i lower = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    const __m128i upper = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + octet<Bits>::upper));
    const __m256i bytes = _mm256_inserti128_si256(_mm256_castsi128_si256(lower), upper, 1);
    const __m256i lanes =
        _mm256_shuffle_epi8(bytes, _mm256_load_si256(reinterpret_cast<const __m256i*>(octet<Bits>::shuffle.data())));
    const __m256i low =
        _mm256_srlv_epi32(lanes, _mm256_load_si256(reinterpret_cast<const __m256i*>(octet<Bits>::shifts.data())));
    return _mm256_and_si256(low, _mm256_set1_epi32(static_cast<int>(valueMask)));
}

[[gnu::target("avx2"), gnu::always_inline]] inline void store(void* out, __m256i value) {
    _mm256_storeu_si256(static_cast<__m256i*>(out), value);
}

template <class T, unsigned Bits>
[[gnu::target("avx2")]] void unpack_avx2(const char* in, const char* in_end, uint64_t groups, uint64_t base,
                                         void* out) {
    T* values = static_cast<T*>(out);
    // Bits above a narrow value's width wrap away; the packing below would saturate them.
    constexpr uint32_t valueMask = mask<Bits> & static_cast<std::make_unsigned_t<T>>(~T{0});
    for (; groups != 0 && in_end - in >= static_cast<ptrdiff_t>(Bits * 4 + octetSlack);
         --groups, in += Bits * 4, values += groupLength) {
        const __m256i a = unpack_octet<Bits>(in, valueMask);
        const __m256i b = unpack_octet<Bits>(in + Bits, valueMask);
        const __m256i c = unpack_octet<Bits>(in + 2 * Bits, valueMask);
        const __m256i d = unpack_octet<Bits>(in + 3 * Bits, valueMask);
        if constexpr (sizeof(T) == 8) {
            const __m256i add = _mm256_set1_epi64x(static_cast<long long>(base));
            const __m256i octets[] = {a, b, c, d};
            for (unsigned i = 0; i < 4; ++i) {
                const __m256i low = _mm256_cvtepu32_epi64(_mm256_castsi256_si128(octets[i]));
                const __m256i high = _mm256_cvtepu32_epi64(_mm256_extracti128_si256(octets[i], 1));
                store(values + 8 * i, _mm256_add_epi64(low, add));
                store(values + 8 * i + 4, _mm256_add_epi64(high, add));
            }
        } else if constexpr (sizeof(T) == 4) {
            const __m256i add = _mm256_set1_epi32(static_cast<int>(base));
            store(values, _mm256_add_epi32(a, add));
            store(values + 8, _mm256_add_epi32(b, add));
            store(values + 16, _mm256_add_epi32(c, add));
            store(values + 24, _mm256_add_epi32(d, add));
        } else {
            // Packing works on each half of a register; the permutation brings the quarters back into order.
            const __m256i low = _mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), 0xD8);
            const __m256i high = _mm256_permute4x64_epi64(_mm256_packus_epi32(c, d), 0xD8);
            if constexpr (sizeof(T) == 2) {
                const __m256i add = _mm256_set1_epi16(static_cast<short>(base));
                store(values, _mm256_add_epi16(low, add));
                store(values + 16, _mm256_add_epi16(high, add));
            } else {
                const __m256i add = _mm256_set1_epi8(static_cast<char>(base));
                const __m256i all = _mm256_permute4x64_epi64(_mm256_packus_epi16(low, high), 0xD8);
                store(values, _mm256_add_epi8(all, add));
            }
        }
    }
    unpack<T, Bits>(in, in_end, groups, base, values);
}

using unpack_table = std::array<unpack_function, maximal_packed_bits>;

template <class T, unsigned... I>
constexpr unpack_table make_table(std::integer_sequence<unsigned, I...>) {
    return {&unpack<T, I + 1>...};
}

template <class T, unsigned... I>
constexpr unpack_table make_table_avx2(std::integer_sequence<unsigned, I...>) {
    return {&unpack_avx2<T, I + 1>...};
}

using all_bits = std::make_integer_sequence<unsigned, maximal_packed_bits>;

// By the logarithm of the width.
constexpr unpack_table plain_tables[] = {make_table<uint8_t>(all_bits()), make_table<uint16_t>(all_bits()),
                                         make_table<uint32_t>(all_bits()), make_table<uint64_t>(all_bits())};
constexpr unpack_table avx2_tables[] = {make_table_avx2<uint8_t>(all_bits()), make_table_avx2<uint16_t>(all_bits()),
                                        make_table_avx2<uint32_t>(all_bits()), make_table_avx2<uint64_t>(all_bits())};

bool has_avx2() {
    // The compiler's test includes that the system saves the wide registers.
    static const bool available = CPU::IsVectFeatureEnabled() && __builtin_cpu_supports("avx2");
    return available;
}

}  // namespace

unpack_function decode_functype_bits(unsigned width, unsigned bits) {
    const unsigned log = static_cast<unsigned>(__builtin_ctz(width | 16));
    if (bits < 1 || bits > maximal_packed_bits || log > 3 || width != 1u << log)
        throw QVE_DomainError(status::FORDataStream_decode_functype_bits, "FORDataStream::decode_functype_bits");
    return (has_avx2() ? avx2_tables : plain_tables)[log][bits - 1];
}

}  // namespace qve
