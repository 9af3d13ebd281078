#include "storage/AffineDataStream.h"

#include <algorithm>

#include "storage/integer_width.h"
#include "storage/status.h"
#include "storage/stream/MemoryDataStream.h"
#include "system/QuillonException.h"
#include "types/usratom.h"

namespace qve {

namespace {

constexpr const char* typeName = "AffineDataStream";
constexpr uint16_t typeCode = 3;

// The stored form; every machine that this runs on has its byte order.
struct Header {
    uint64_t length;
    uint64_t offset;
    uint32_t block;
    uint16_t code;
    uint8_t bits;
    uint8_t width;
    int64_t first;
    int64_t step;
};
static_assert(sizeof(Header) == 40);

template <class T>
void decode(std::make_unsigned_t<T> value, std::make_unsigned_t<T> step, uint64_t count, T* out) {
    for (uint64_t i = 0; i < count; ++i) {
        out[i] = static_cast<T>(value);
        value += step;
    }
}

// How many cells are not where the line has them.
template <class T>
uint64_t encode(const char* cells, uint64_t count, std::make_unsigned_t<T> value, std::make_unsigned_t<T> step) {
    uint64_t mismatches = 0;
    for (uint64_t i = 0; i < count; ++i) {
        T cell;
        std::memcpy(&cell, cells + i * sizeof(T), sizeof(T));
        mismatches += static_cast<std::make_unsigned_t<T>>(cell) != value;
        value += step;
    }
    return mismatches;
}

}  // namespace

AffineDataStream::AffineDataStream(RefCntPtr<DataStream> stored) : EncodedDataStream(std::move(stored), typeName) {
    Header header;
    const bool valid = ReadStored(0, &header, sizeof(header)) && header.offset == sizeof(header) &&
                       header.code == typeCode && is_integer_width(header.width) && header.length % header.width == 0;
    if (!valid) throw QVE_RuntimeError(status::AffineDataStream_Header, "AffineDataStream::Initialise: bad header");
    SetWidth(header.width);
    SetLength(header.length);
    m_block = header.block;
    m_first = wrap_integer(header.first, header.width);
    m_step = wrap_integer(header.step, header.width);
}

AffineDataStream::AffineDataStream(RefCntPtr<DataStream> target, unsigned width, unsigned block, int64_t first,
                                   int64_t step)
    : EncodedDataStream(std::move(target), typeName), m_block(block) {
    if (!is_integer_width(width))
        throw QVE_DomainError(status::AffineDataStream_Initialise, "AffineDataStream::Initialise: No decoder");
    SetWidth(width);
    m_first = wrap_integer(first, width);
    m_step = wrap_integer(step, width);
    SetDirty(true);
}

AffineDataStream::AffineDataStream(const AffineDataStream& other, RefCntPtr<DataStream> delegate)
    : EncodedDataStream(std::move(delegate), typeName),
      m_first(other.m_first),
      m_step(other.m_step),
      m_block(other.m_block) {}

RefCntPtr<AffineDataStream> AffineDataStream::MakeRowNumbers(uint64_t rows) {
    constexpr unsigned width = 8;
    auto numbers = MakeRef<AffineDataStream>(MakeRef<MemoryDataStream>(), width, 0, 0, 1);
    numbers->SetLength(rows * width);
    numbers->Flush();
    return numbers;
}

unsigned AffineDataStream::GetDeltaType(unsigned width) {
    if (!is_integer_width(width))
        throw QVE_DomainError(status::AffineDataStream_GetDeltaType, "AffineDataStream::GetDeltaType");
    return width;
}

EncodedDataStream::Decoded AffineDataStream::Decode(uint64_t position, uint64_t minimum, DecodeBuffer& buffer) {
    const uint64_t row = position / GetWidth();
    const uint64_t begin = row * GetWidth();
    const uint64_t wanted = std::max(position - begin + minimum, GetPageLimit());
    const uint64_t count = (std::min(wanted, GetSize() - begin) + GetWidth() - 1) / GetWidth();
    buffer.Reserve(count * GetWidth());
    with_width(GetWidth(), [&](auto zero) {
        using T = decltype(zero);
        using U = std::make_unsigned_t<T>;
        const U step = static_cast<U>(m_step);
        const U value = static_cast<U>(static_cast<U>(m_first) + static_cast<U>(uint64_t{step} * row));
        decode<T>(value, step, count, reinterpret_cast<T*>(buffer.data()));
    });
    return {begin, count * GetWidth()};
}

void AffineDataStream::Encode(const char* cells, uint64_t bytes) {
    const uint64_t row = GetSize() / GetWidth();
    const uint64_t mismatches = with_width(GetWidth(), [&](auto zero) {
        using T = decltype(zero);
        using U = std::make_unsigned_t<T>;
        const U step = static_cast<U>(m_step);
        const U value = static_cast<U>(static_cast<U>(m_first) + static_cast<U>(uint64_t{step} * row));
        return encode<T>(cells, bytes / sizeof(T), value, step);
    });
    if (mismatches != 0) throw QVE_OverflowError(status::AffineDataStream_Overflow, "AffineDataStream::FlushData");
}

void AffineDataStream::Flush() {
    if (!IsDirty()) return;
    Header header = {GetSize(), sizeof(Header), m_block, typeCode, 0, static_cast<uint8_t>(GetWidth()), 0, 0};
    store_integer(reinterpret_cast<char*>(&header.first), GetWidth(), m_first);
    store_integer(reinterpret_cast<char*>(&header.step), GetWidth(), m_step);
    WriteStored(0, &header, sizeof(header));
    SetDirty(false);
}

void AffineDataStream::SetBase(const usratom& first) {
    const unsigned width = GetDeltaType(static_cast<unsigned>(first.length()));
    DropWindow();
    SetLength(GetSize() / GetWidth() * width);
    SetWidth(width);
    m_first = load_integer(first.data(), width);
    m_step = wrap_integer(m_step, width);
    SetDirty(true);
    Flush();
}

bool AffineDataStream::HasSameLayout(const EncodedDataStream& other) const {
    const auto* same = dynamic_cast<const AffineDataStream*>(&other);
    return same && same->GetWidth() == GetWidth() && same->m_first == m_first && same->m_step == m_step;
}

RefCntPtr<EncodedDataStream> AffineDataStream::MakeFork(RefCntPtr<DataStream> delegate) const {
    return RefCntPtr<EncodedDataStream>(new AffineDataStream(*this, std::move(delegate)));
}

void AffineDataStream::ThrowSeek() const {
    throw QVE_OutOfRange(status::AffineDataStream_Seek, "AffineDataStream::Seek");
}

}  // namespace qve
