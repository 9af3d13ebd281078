#pragma once

#include "storage/BlockDataStream.h"
#include "storage/bit_unpacking.h"

namespace qve {

class usratom;

/// Frame of reference, "for": value = base + packed number, with wrap-around in the width.
class FORDataStream final : public BlockDataStream {
public:
    /// Reads a stored stream.
    explicit FORDataStream(RefCntPtr<DataStream> stored);
    /// Writes to `target`, which is empty. Values from `base` to base + 2^bits - 1 have a place.
    FORDataStream(RefCntPtr<DataStream> target, unsigned width, unsigned bits, unsigned block, int64_t base);

    int64_t GetBase() const { return m_base; }
    /// Takes another base, of the same or of another width; the values move with it, or change their width. All of them
    /// must have a place in the new width.
    void SetBase(const usratom& base);

    std::wstring_view GetEncodingName() const override { return L"for"; }
    bool HasSameLayout(const EncodedDataStream& other) const override;

protected:
    void DecodeBlocks(const char* in, const char* in_end, uint64_t blocks, char* out) const override;
    void CheckFits(const char* previous, const char* cells, uint64_t count) override;
    void EncodeBlock(const char* cells, unsigned count, unsigned* packed, char* prefix) const override;
    int64_t GetHeaderBase() const override { return m_base; }
    RefCntPtr<EncodedDataStream> MakeFork(RefCntPtr<DataStream> delegate) const override;
    [[noreturn]] void ThrowSeek() const override;

private:
    FORDataStream(const FORDataStream& other, RefCntPtr<DataStream> delegate);
    void Initialise();

    int64_t m_base;
    unpack_function m_unpack = nullptr;
};

}  // namespace qve
