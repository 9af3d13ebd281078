#pragma once

#include <vector>

#include "primitives/pack.h"
#include "storage/EncodedDataStream.h"

namespace qve {

/// What "for", "delta" and "dict" have in common: a header, then blocks of equally many cells, each packed to equally
/// many bits. A block is stored full; the cells that the last one lacks are packed as 0.
///
/// The header, little-endian: 0 length of the plain cells in bytes (8 bytes), 8 offset of the first block (8), 16 cells
/// to a block (4), 20 type code (2), 22 bits to a packed cell (1), 23 bytes to a plain cell (1), 24 the base.
class BlockDataStream : public EncodedDataStream {
public:
    unsigned GetBits() const { return m_bits; }
    /// Cells to a block.
    unsigned GetBlockLength() const { return m_block; }

    uint64_t GetPageLimit() const final { return uint64_t{m_block} * GetWidth(); }
    uint64_t Load(uint64_t position, uint64_t count) const final;
    void Flush() final;

protected:
    enum class TypeCode : uint16_t { FrameOfReference = 0, Delta = 1, Dictionary = 2, Affine = 3 };
    static constexpr uint64_t headerSize = 32;
    static constexpr unsigned minimalBlock = 32;
    static constexpr unsigned maximalBlock = 1 << 20;

    /// A stream to be written.
    BlockDataStream(RefCntPtr<DataStream> delegate, const char* typeName, TypeCode code, unsigned width, unsigned bits,
                    unsigned block);
    /// A stored stream. Reads and checks the header: 40059, and 40060 when blocks are missing.
    BlockDataStream(RefCntPtr<DataStream> delegate, const char* typeName, TypeCode code);
    /// A fork.
    BlockDataStream(const BlockDataStream& other, RefCntPtr<DataStream> delegate);

    /// To be called by the most derived constructor: checks what the header says of sizes against the delegate.
    void CheckStoredSize() const;
    /// To be called by the most derived constructor of a stream to be written.
    void Begin();

    /// Bytes between header and first block; bytes before the packed cells of each block.
    virtual uint64_t GetDictionarySize() const { return 0; }
    virtual unsigned GetBlockPrefix() const { return 0; }
    /// Decodes `blocks` blocks that lie one behind the other at `in`.
    virtual void DecodeBlocks(const char* in, const char* in_end, uint64_t blocks, char* out) const = 0;
    /// Throws QVE_OverflowError when one of the cells has no place in this encoding. `previous` is the cell before the
    /// first one, null when that begins a stream. May prepare for EncodeBlock.
    virtual void CheckFits(const char* previous, const char* cells, uint64_t count) = 0;
    /// Turns `count` cells into numbers of GetBits bits, and writes the prefix of the block.
    virtual void EncodeBlock(const char* cells, unsigned count, unsigned* packed, char* prefix) const = 0;
    /// Writes what stands between the header and the first block.
    virtual void WriteDictionary() {}
    /// The base in the header: GetWidth() bytes, or 8 for a dictionary, which has none.
    virtual int64_t GetHeaderBase() const = 0;

    /// What the header of a stored stream has at the place of the base, sign-extended.
    int64_t GetStoredBase() const { return m_storedBase; }
    /// Changes the width of the plain cells, for a change of type that leaves the packed numbers as they are.
    void ChangeWidth(unsigned width);

    Decoded GetWindow(uint64_t position, uint64_t minimum) const final;
    Decoded Decode(uint64_t position, uint64_t minimum, DecodeBuffer& buffer) final;
    void Encode(const char* cells, uint64_t bytes) final;

private:
    uint64_t BlockBytes() const { return uint64_t{m_block} * GetWidth(); }
    uint64_t PackedBytes() const { return GetBlockPrefix() + uint64_t{m_bits} * m_block / 8; }
    uint64_t BlockOffset(uint64_t index) const { return headerSize + GetDictionarySize() + index * PackedBytes(); }
    void WriteHeader();
    void WriteBlock(uint64_t index, const char* cells, unsigned count);
    void ReadTail();

    TypeCode m_code;
    unsigned m_bits;
    unsigned m_block;
    pack_func m_pack = nullptr;
    int64_t m_storedBase = 0;

    // For writing.
    bool m_tailRead = false;    // whether the members below say what the stream holds
    uint64_t m_fullBlocks = 0;  // stored for good
    std::vector<char> m_tail;   // the cells behind them, less than a block
    char m_last[8] = {};        // the last cell
    std::vector<unsigned> m_numbers;
    std::vector<unsigned> m_packed;
    std::vector<char> m_stored;
};

}  // namespace qve
