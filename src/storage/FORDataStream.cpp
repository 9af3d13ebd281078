#include "storage/FORDataStream.h"

#include "storage/integer_width.h"
#include "storage/status.h"
#include "system/QuillonException.h"
#include "types/usratom.h"

namespace qve {

namespace {

constexpr const char* typeName = "FORDataStream";

// The bits that any distance of a cell from the base has. Loops of this kind are kept free of exits, for the compiler.
template <class T>
std::make_unsigned_t<T> union_of_distances(const char* cells, uint64_t count, T base) {
    using U = std::make_unsigned_t<T>;
    U bits = 0;
    for (uint64_t i = 0; i < count; ++i) {
        T cell;
        std::memcpy(&cell, cells + i * sizeof(T), sizeof(T));
        bits |= static_cast<U>(static_cast<U>(cell) - static_cast<U>(base));
    }
    return bits;
}

// The distances of the cells from the base, which all fit.
template <class T>
void encode(const char* cells, unsigned count, T base, unsigned* packed) {
    using U = std::make_unsigned_t<T>;
    for (unsigned i = 0; i < count; ++i) {
        T cell;
        std::memcpy(&cell, cells + i * sizeof(T), sizeof(T));
        packed[i] = static_cast<unsigned>(static_cast<U>(static_cast<U>(cell) - static_cast<U>(base)));
    }
}

}  // namespace

FORDataStream::FORDataStream(RefCntPtr<DataStream> stored)
    : BlockDataStream(std::move(stored), typeName, TypeCode::FrameOfReference), m_base(GetStoredBase()) {
    Initialise();
    CheckStoredSize();
}

FORDataStream::FORDataStream(RefCntPtr<DataStream> target, unsigned width, unsigned bits, unsigned block, int64_t base)
    : BlockDataStream(std::move(target), typeName, TypeCode::FrameOfReference, width, bits, block),
      m_base(wrap_integer(base, width)) {
    if (!is_integer_width(width))
        throw QVE_DomainError(status::FORDataStream_Initialise_encoder, "FORDataStream::Initialise: No encoder");
    Initialise();
    Begin();
}

FORDataStream::FORDataStream(const FORDataStream& other, RefCntPtr<DataStream> delegate)
    : BlockDataStream(other, std::move(delegate)), m_base(other.m_base), m_unpack(other.m_unpack) {}

void FORDataStream::Initialise() {
    if (!is_integer_width(GetWidth()))
        throw QVE_DomainError(status::FORDataStream_Initialise_decoder, "FORDataStream::Initialise: No decoder");
    m_unpack = decode_functype_bits(GetWidth(), GetBits());
}

void FORDataStream::DecodeBlocks(const char* in, const char* in_end, uint64_t blocks, char* out) const {
    m_unpack(in, in_end, blocks * GetBlockLength() / 32, static_cast<uint64_t>(m_base), out);
}

void FORDataStream::CheckFits(const char*, const char* cells, uint64_t count) {
    const bool fits = with_width(GetWidth(), [&](auto zero) {
        using T = decltype(zero);
        const uint64_t bits = union_of_distances<T>(cells, count, static_cast<T>(m_base));
        return bits >> GetBits() == 0;
    });
    if (!fits) throw QVE_OverflowError(status::FORDataStream_FlushData, "FlushData");
}

void FORDataStream::EncodeBlock(const char* cells, unsigned count, unsigned* packed, char*) const {
    with_width(GetWidth(), [&](auto zero) {
        using T = decltype(zero);
        encode<T>(cells, count, static_cast<T>(m_base), packed);
    });
}

void FORDataStream::SetBase(const usratom& base) {
    const unsigned width = static_cast<unsigned>(base.length());
    if (!is_integer_width(width))
        throw QVE_DomainError(status::FORDataStream_Initialise_encoder, "FORDataStream::Initialise: No encoder");
    Flush();
    DropWindow();
    m_base = load_integer(base.data(), width);
    if (width != GetWidth()) ChangeWidth(width);
    Initialise();
    SetDirty(true);
    Flush();
}

bool FORDataStream::HasSameLayout(const EncodedDataStream& other) const {
    const auto* same = dynamic_cast<const FORDataStream*>(&other);
    return same && same->GetBits() == GetBits() && same->GetWidth() == GetWidth() && same->m_base == m_base;
}

RefCntPtr<EncodedDataStream> FORDataStream::MakeFork(RefCntPtr<DataStream> delegate) const {
    return RefCntPtr<EncodedDataStream>(new FORDataStream(*this, std::move(delegate)));
}

void FORDataStream::ThrowSeek() const {
    throw QVE_OutOfRange(status::FORDataStream_Seek, "FORDataStream::Seek");
}

}  // namespace qve
