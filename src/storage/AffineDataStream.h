#pragma once

#include "storage/EncodedDataStream.h"

namespace qve {

class usratom;

/// A straight line, "affine": value at row i = first + step * i, with wrap-around in the width. The stored form is a
/// header of 40 bytes and nothing else: 0 length of the plain cells in bytes (8 bytes), 8 the number 40 (8), 16 block
/// length (4), 20 type code 3 (2), 22 zero (1), 23 bytes to a cell (1), 24 first value (8), 32 step (8).
class AffineDataStream final : public EncodedDataStream {
public:
    /// Reads a stored stream.
    explicit AffineDataStream(RefCntPtr<DataStream> stored);
    /// Writes to `target`, which is empty.
    AffineDataStream(RefCntPtr<DataStream> target, unsigned width, unsigned block, int64_t first, int64_t step);

    /// The numbers from 0 to `rows` - 1, in cells of 8 bytes.
    static RefCntPtr<AffineDataStream> MakeRowNumbers(uint64_t rows);

    int64_t GetFirst() const { return m_first; }
    int64_t GetStep() const { return m_step; }
    /// Takes another first value, of the same or of another width; the values move with it, or change their width.
    void SetBase(const usratom& first);
    /// The size of a step for cells of `width` bytes; throws QVE_DomainError 40188 for another width than 1, 2, 4, 8.
    static unsigned GetDeltaType(unsigned width);

    std::wstring_view GetEncodingName() const override { return L"affine"; }
    uint64_t GetPageLimit() const override { return uint64_t{GetWidth()} << 10; }
    bool HasSameLayout(const EncodedDataStream& other) const override;
    void Flush() override;

protected:
    Decoded Decode(uint64_t position, uint64_t minimum, DecodeBuffer& buffer) override;
    void Encode(const char* cells, uint64_t bytes) override;
    RefCntPtr<EncodedDataStream> MakeFork(RefCntPtr<DataStream> delegate) const override;
    [[noreturn]] void ThrowSeek() const override;

private:
    AffineDataStream(const AffineDataStream& other, RefCntPtr<DataStream> delegate);

    int64_t m_first = 0;
    int64_t m_step = 0;
    unsigned m_block = 0;
};

}  // namespace qve
