#include "storage/DeltaDataStream.h"

#include <algorithm>

#include "storage/integer_width.h"
#include "storage/status.h"
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
        last = add_up<T>(packed, n, static_cast<U>(base), last, out + done);
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
