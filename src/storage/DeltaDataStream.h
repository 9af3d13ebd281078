#pragma once

#include "storage/BlockDataStream.h"
#include "storage/bit_unpacking.h"

namespace qve {

/// Differences, "delta": each block begins with its first value, and value[i] = value[i - 1] + base + packed[i], with
/// wrap-around in the width. The place of the first value among the packed ones is 0.
class DeltaDataStream final : public BlockDataStream {
public:
    /// Reads a stored stream.
    explicit DeltaDataStream(RefCntPtr<DataStream> stored);
    /// Writes to `target`, which is empty. Differences from `base` to base + 2^bits - 1 have a place.
    DeltaDataStream(RefCntPtr<DataStream> target, unsigned width, unsigned bits, unsigned block, int64_t base);

    /// The smallest difference that has a place.
    int64_t GetBase() const { return m_base; }

    std::wstring_view GetEncodingName() const override { return L"delta"; }
    bool HasSameLayout(const EncodedDataStream& other) const override;

protected:
    unsigned GetBlockPrefix() const override { return GetWidth(); }
    void DecodeBlocks(const char* in, const char* in_end, uint64_t blocks, char* out) const override;
    void CheckFits(const char* previous, const char* cells, uint64_t count) override;
    void EncodeBlock(const char* cells, unsigned count, unsigned* packed, char* prefix) const override;
    int64_t GetHeaderBase() const override { return m_base; }
    RefCntPtr<EncodedDataStream> MakeFork(RefCntPtr<DataStream> delegate) const override;
    [[noreturn]] void ThrowSeek() const override;

private:
    DeltaDataStream(const DeltaDataStream& other, RefCntPtr<DataStream> delegate);
    void Initialise();

    int64_t m_base;
    unpack_function m_unpack = nullptr;  // to 32 bits
};

}  // namespace qve
