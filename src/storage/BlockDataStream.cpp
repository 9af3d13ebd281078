#include "storage/BlockDataStream.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string>

#include "storage/bit_unpacking.h"
#include "storage/integer_width.h"
#include "storage/status.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

// The header as it is stored; every machine that this runs on has its byte order.
struct Header {
    uint64_t length;
    uint64_t offset;
    uint32_t block;
    uint16_t code;
    uint8_t bits;
    uint8_t width;
    int64_t base;
};
static_assert(sizeof(Header) == 32);

[[noreturn]] void bad_header(const char* typeName) {
    throw QVE_RuntimeError(status::BlockDataStream_Header, std::string(typeName) + "::Initialise: bad header");
}

}  // namespace

BlockDataStream::BlockDataStream(RefCntPtr<DataStream> delegate, const char* typeName, TypeCode code, unsigned width,
                                 unsigned bits, unsigned block)
    : EncodedDataStream(std::move(delegate), typeName),
      m_code(code),
      m_bits(bits),
      m_block(std::bit_ceil(std::clamp(block, minimalBlock, maximalBlock))),
      m_tailRead(true) {
    SetWidth(width);
}

BlockDataStream::BlockDataStream(RefCntPtr<DataStream> delegate, const char* typeName, TypeCode code)
    : EncodedDataStream(std::move(delegate), typeName), m_code(code) {
    Header header;
    if (!ReadStored(0, &header, sizeof(header))) bad_header(typeName);
    const bool valid = header.code == static_cast<uint16_t>(code) && is_integer_width(header.width) &&
                       header.bits >= 1 && header.bits <= maximal_packed_bits && std::has_single_bit(header.block) &&
                       header.block >= minimalBlock && header.block <= maximalBlock &&
                       header.length % header.width == 0;
    if (!valid) bad_header(typeName);
    const uint64_t dictionary = code == TypeCode::Dictionary ? uint64_t{header.width} << header.bits : 0;
    if (header.offset != headerSize + dictionary) bad_header(typeName);
    m_bits = header.bits;
    m_block = header.block;
    m_storedBase = wrap_integer(header.base, header.width);
    SetWidth(header.width);
    SetLength(header.length);
}

BlockDataStream::BlockDataStream(const BlockDataStream& other, RefCntPtr<DataStream> delegate)
    : EncodedDataStream(std::move(delegate), other.GetDerivedTypeName()),
      m_code(other.m_code),
      m_bits(other.m_bits),
      m_block(other.m_block),
      m_storedBase(other.m_storedBase) {}

void BlockDataStream::CheckStoredSize() const {
    const uint64_t blocks = GetSize() / BlockBytes() + (GetSize() % BlockBytes() != 0);
    const uint64_t stored = GetDelegate()->GetSize();
    const uint64_t before = headerSize + GetDictionarySize();
    if (stored < before || (stored - before) / PackedBytes() < blocks) {
        throw QVE_RuntimeError(status::BlockDataStream_Truncated,
                               std::string(GetDerivedTypeName()) + "::Initialise: blocks are missing");
    }
}

void BlockDataStream::Begin() {
    const std::vector<char> room(headerSize + GetDictionarySize());
    GetDelegate()->Append(room.data(), room.size());
    SetDirty(true);
}

uint64_t BlockDataStream::Load(uint64_t position, uint64_t count) const {
    const uint64_t first = position / BlockBytes();
    const uint64_t last = (position + count) / BlockBytes() + 1;
    return GetDelegate()->Load(BlockOffset(first), (last - first) * PackedBytes());
}

// The blocks in which the cells lie.
EncodedDataStream::Decoded BlockDataStream::GetWindow(uint64_t position, uint64_t minimum) const {
    const uint64_t first = position / BlockBytes();
    const uint64_t last = (position + minimum + BlockBytes() - 1) / BlockBytes();
    return {first * BlockBytes(), (last - first) * BlockBytes()};
}

EncodedDataStream::Decoded BlockDataStream::Decode(uint64_t position, uint64_t minimum, DecodeBuffer& buffer) {
    const Decoded window = GetWindow(position, minimum);
    const uint64_t first = window.begin / BlockBytes();
    const uint64_t last = first + window.size / BlockBytes();
    buffer.Reserve(window.size);
    DataStream& stored = *GetDelegate();
    for (uint64_t block = first; block < last;) {
        // As a rule one window holds them all.
        const uint64_t limit = stored.Seek(BlockOffset(block), (last - block) * PackedBytes());
        const uint64_t blocks = std::min(limit / PackedBytes(), last - block);
        if (blocks == 0) {
            throw QVE_RuntimeError(status::BlockDataStream_Truncated,
                                   std::string(GetDerivedTypeName()) + "::Seek: blocks are missing");
        }
        const char* in = stored.GetInput(0);
        DecodeBlocks(in, in + limit, blocks, buffer.data() + (block - first) * BlockBytes());
        block += blocks;
    }
    return window;
}

void BlockDataStream::ReadTail() {
    m_fullBlocks = GetSize() / BlockBytes();
    const uint64_t begin = m_fullBlocks * BlockBytes();
    if (begin < GetSize()) {
        DecodeBuffer buffer;
        Decode(begin, GetSize() - begin, buffer);
        m_tail.assign(buffer.data(), buffer.data() + (GetSize() - begin));
        std::memcpy(m_last, m_tail.data() + m_tail.size() - GetWidth(), GetWidth());
    } else if (begin > 0) {
        DecodeBuffer buffer;
        Decode(begin - BlockBytes(), BlockBytes(), buffer);
        std::memcpy(m_last, buffer.data() + BlockBytes() - GetWidth(), GetWidth());
    }
    m_tailRead = true;
}

void BlockDataStream::Encode(const char* cells, uint64_t bytes) {
    if (!m_tailRead) ReadTail();
    CheckFits(GetSize() == 0 ? nullptr : m_last, cells, bytes / GetWidth());
    std::memcpy(m_last, cells + bytes - GetWidth(), GetWidth());
    while (bytes > 0) {
        uint64_t taken;
        if (m_tail.empty() && bytes >= BlockBytes()) {
            taken = BlockBytes();
            WriteBlock(m_fullBlocks++, cells, m_block);
        } else {
            taken = std::min(bytes, BlockBytes() - m_tail.size());
            m_tail.insert(m_tail.end(), cells, cells + taken);
            if (m_tail.size() == BlockBytes()) {
                WriteBlock(m_fullBlocks++, m_tail.data(), m_block);
                m_tail.clear();
            }
        }
        cells += taken;
        bytes -= taken;
    }
}

void BlockDataStream::WriteBlock(uint64_t index, const char* cells, unsigned count) {
    constexpr unsigned packedAtOnce = 1 << 15;  // the packer counts in 16 bits
    if (!m_pack) m_pack = pack_func_ulng_col_ulng_col(m_bits);
    m_numbers.resize(m_block);
    m_packed.resize(m_block / 32 * m_bits);
    m_stored.resize(PackedBytes());
    EncodeBlock(cells, count, m_numbers.data(), m_stored.data());
    std::fill(m_numbers.begin() + count, m_numbers.end(), 0u);
    for (unsigned done = 0; done < m_block; done += packedAtOnce) {
        const unsigned n = std::min(m_block - done, packedAtOnce);
        m_pack(static_cast<unsigned short>(n), m_packed.data() + done / 32 * m_bits, m_numbers.data() + done);
    }
    std::memcpy(m_stored.data() + GetBlockPrefix(), m_packed.data(), m_packed.size() * sizeof(unsigned));
    WriteStored(BlockOffset(index), m_stored.data(), m_stored.size());
}

void BlockDataStream::Flush() {
    if (!IsDirty()) return;
    if (!m_tail.empty()) WriteBlock(m_fullBlocks, m_tail.data(), static_cast<unsigned>(m_tail.size() / GetWidth()));
    WriteDictionary();
    WriteHeader();
    SetDirty(false);
}

void BlockDataStream::WriteHeader() {
    Header header;
    header.length = GetSize();
    header.offset = headerSize + GetDictionarySize();
    header.block = m_block;
    header.code = static_cast<uint16_t>(m_code);
    header.bits = static_cast<uint8_t>(m_bits);
    header.width = static_cast<uint8_t>(GetWidth());
    header.base = 0;
    store_integer(reinterpret_cast<char*>(&header.base), GetWidth(), GetHeaderBase());
    WriteStored(0, &header, sizeof(header));
}

void BlockDataStream::ChangeWidth(unsigned width) {
    Flush();
    DropWindow();
    SetLength(GetSize() / GetWidth() * width);
    SetWidth(width);
    m_tail.clear();
    m_tailRead = false;  // to be read again, in the new width
    SetDirty(true);
}

}  // namespace qve
