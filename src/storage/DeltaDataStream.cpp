#include "storage/DeltaDataStream.h"

#include <immintrin.h>

#include <algorithm>

#include "storage/integer_width.h"
#include "storage/status.h"
#include "system/CPU.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

constexpr const char* typeName = "DeltaDataStream";

template <class T>
T cell_at(const char* cells, uint64_t i) {
    T cell;
    std::memcpy(&cell, cells + i * sizeof(T), sizeof(T));
    return cell;
}

// Each value from the one before it. One addition waits for the last value; the other does not.
template <class T>
T add_up(const uint32_t* packed, unsigned count, std::make_unsigned_t<T> base, T last, T* out) {
    using U = std::make_unsigned_t<T>;
    U value = static_cast<U>(last);
    for (unsigned i = 0; i < count; ++i) {
        value = static_cast<U>(value + static_cast<U>(base + static_cast<U>(packed[i])));
        out[i] = static_cast<T>(value);
    }
    return static_cast<T>(value);
}

// The same for a number of values that is a multiple of 8. Sums within a register take the logarithm of its lanes in
// steps, and only the last value is carried on to the next.
[[gnu::target("avx2")]] int add_up_avx2(const uint32_t* packed, unsigned count, uint32_t base, int last, int* out) {
    const __m256i step = _mm256_set1_epi32(static_cast<int>(base));
    const __m256i endOfLow = _mm256_set1_epi32(3);
    const __m256i endOfAll = _mm256_set1_epi32(7);
    __m256i carry = _mm256_set1_epi32(last);
    for (unsigned i = 0; i < count; i += 8) {
        const __m256i in = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(packed + i));
        __m256i sums = _mm256_add_epi32(in, step);
        sums = _mm256_add_epi32(sums, _mm256_slli_si256(sums, 4));
        sums = _mm256_add_epi32(sums, _mm256_slli_si256(sums, 8));
        const __m256i low = _mm256_permutevar8x32_epi32(sums, endOfLow);
        sums = _mm256_add_epi32(sums, _mm256_blend_epi32(_mm256_setzero_si256(), low, 0xF0));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), _mm256_add_epi32(sums, carry));
        // One addition waits for the last register; the sums within this one do not.
        carry = _mm256_add_epi32(carry, _mm256_permutevar8x32_epi32(sums, endOfAll));
    }
    return _mm256_cvtsi256_si32(carry);
}

[[gnu::target("avx2")]] long long add_up_avx2(const uint32_t* packed, unsigned count, uint64_t base, long long last,
                                              long long* out) {
    const __m256i step = _mm256_set1_epi64x(static_cast<long long>(base));
    __m256i carry = _mm256_set1_epi64x(last);
    for (unsigned i = 0; i < count; i += 4) {
        const __m256i in = _mm256_cvtepu32_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i*>(packed + i)));
        __m256i sums = _mm256_add_epi64(in, step);
        sums = _mm256_add_epi64(sums, _mm256_slli_si256(sums, 8));
        const __m256i low = _mm256_permute4x64_epi64(sums, 0x55);
        sums = _mm256_add_epi64(sums, _mm256_blend_epi32(_mm256_setzero_si256(), low, 0xF0));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), _mm256_add_epi64(sums, carry));
        carry = _mm256_add_epi64(carry, _mm256_permute4x64_epi64(sums, 0xFF));
    }
    return _mm_cvtsi128_si64(_mm256_castsi256_si128(carry));
}

template <class T>
T add_up_best(const uint32_t* packed, unsigned count, std::make_unsigned_t<T> base, T last, T* out) {
    if constexpr (sizeof(T) >= 4) {
        static const bool available = CPU::IsVectFeatureEnabled() && __builtin_cpu_supports("avx2");
        if (available) return add_up_avx2(packed, count, base, last, out);
    }
    return add_up<T>(packed, count, base, last, out);
}

template <class T>
void decode_block(const char* in, const char* in_end, unsigned count, unsigned bits, unpack_function unpack, T base,
                  T* out) {
    constexpr unsigned atOnce = 1024;  // stays in the first-level cache between unpacking and adding
    using U = std::make_unsigned_t<T>;
    // The packed place of the first value is 0: taking the base off makes it come out of the same loop.
    T last = static_cast<T>(static_cast<U>(cell_at<T>(in, 0)) - static_cast<U>(base));
    in += sizeof(T);
    for (unsigned done = 0; done < count; done += atOnce) {
        uint32_t packed[atOnce];
        const unsigned n = std::min(count - done, atOnce);
        unpack(in, in_end, n / 32, 0, packed);
        if (done == 0) packed[0] = 0;
        last = add_up_best<T>(packed, n, static_cast<U>(base), last, out + done);
        in += n / 32 * 4 * bits;
    }
}

template <class T>
std::make_unsigned_t<T> union_of_distances(const char* cells, uint64_t count, T base) {
    using U = std::make_unsigned_t<T>;
    U bits = 0;
    for (uint64_t i = 1; i < count; ++i) {
        const U difference =
            static_cast<U>(static_cast<U>(cell_at<T>(cells, i)) - static_cast<U>(cell_at<T>(cells, i - 1)));
        bits |= static_cast<U>(difference - static_cast<U>(base));
    }
    return bits;
}

}  // namespace

DeltaDataStream::DeltaDataStream(RefCntPtr<DataStream> stored)
    : BlockDataStream(std::move(stored), typeName, TypeCode::Delta), m_base(GetStoredBase()) {
    Initialise();
    CheckStoredSize();
}

DeltaDataStream::DeltaDataStream(RefCntPtr<DataStream> target, unsigned width, unsigned bits, unsigned block,
                                 int64_t base)
    : BlockDataStream(std::move(target), typeName, TypeCode::Delta, width, bits, block),
      m_base(wrap_integer(base, width)) {
    if (!is_integer_width(width))
        throw QVE_DomainError(status::DeltaDataStream_Initialise_encoder, "DeltaDataStream::Initialise: No encoder");
    Initialise();
    Begin();
}

DeltaDataStream::DeltaDataStream(const DeltaDataStream& other, RefCntPtr<DataStream> delegate)
    : BlockDataStream(other, std::move(delegate)), m_base(other.m_base), m_unpack(other.m_unpack) {}

void DeltaDataStream::Initialise() {
    if (!is_integer_width(GetWidth()))
        throw QVE_DomainError(status::DeltaDataStream_Initialise_decoder, "DeltaDataStream::Initialise: No decoder");
    m_unpack = decode_functype_bits(sizeof(uint32_t), GetBits());
}

void DeltaDataStream::DecodeBlocks(const char* in, const char* in_end, uint64_t blocks, char* out) const {
    const unsigned length = GetBlockLength();
    const uint64_t stored = GetWidth() + uint64_t{GetBits()} * length / 8;
    with_width(GetWidth(), [&](auto zero) {
        using T = decltype(zero);
        T* values = reinterpret_cast<T*>(out);
        for (uint64_t i = 0; i < blocks; ++i) {
            decode_block<T>(in + i * stored, in_end, length, GetBits(), m_unpack, static_cast<T>(m_base),
                            values + i * length);
        }
    });
}

void DeltaDataStream::CheckFits(const char* previous, const char* cells, uint64_t count) {
    const bool fits = with_width(GetWidth(), [&](auto zero) {
        using T = decltype(zero);
        using U = std::make_unsigned_t<T>;
        const T base = static_cast<T>(m_base);
        uint64_t bits = union_of_distances<T>(cells, count, base);
        if (previous) {
            const U difference =
                static_cast<U>(static_cast<U>(cell_at<T>(cells, 0)) - static_cast<U>(cell_at<T>(previous, 0)));
            bits |= static_cast<U>(difference - static_cast<U>(base));
        }
        return bits >> GetBits() == 0;
    });
    if (!fits) throw QVE_OverflowError(status::DeltaDataStream_FlushData, "DeltaDataStream::FlushData");
}

void DeltaDataStream::EncodeBlock(const char* cells, unsigned count, unsigned* packed, char* prefix) const {
    std::memcpy(prefix, cells, GetWidth());
    packed[0] = 0;
    with_width(GetWidth(), [&](auto zero) {
        using T = decltype(zero);
        using U = std::make_unsigned_t<T>;
        for (unsigned i = 1; i < count; ++i) {
            const U difference =
                static_cast<U>(static_cast<U>(cell_at<T>(cells, i)) - static_cast<U>(cell_at<T>(cells, i - 1)));
            packed[i] = static_cast<unsigned>(static_cast<U>(difference - static_cast<U>(m_base)));
        }
    });
}

bool DeltaDataStream::HasSameLayout(const EncodedDataStream& other) const {
    const auto* same = dynamic_cast<const DeltaDataStream*>(&other);
    return same && same->GetBits() == GetBits() && same->GetWidth() == GetWidth() && same->m_base == m_base &&
           same->GetBlockLength() == GetBlockLength();
}

RefCntPtr<EncodedDataStream> DeltaDataStream::MakeFork(RefCntPtr<DataStream> delegate) const {
    return RefCntPtr<EncodedDataStream>(new DeltaDataStream(*this, std::move(delegate)));
}

void DeltaDataStream::ThrowSeek() const {
    throw QVE_OutOfRange(status::DeltaDataStream_Seek, "DeltaDataStream::Seek");
}

}  // namespace qve
