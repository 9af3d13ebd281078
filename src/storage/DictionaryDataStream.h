#pragma once

#include <vector>

#include "storage/BlockDataStream.h"
#include "storage/IntegerEncoder.h"
#include "storage/bit_unpacking.h"

namespace qve {

/// A dictionary of values, "dict": value = dictionary[packed number]. The dictionary, of 2^bits cells, lies between the
/// header and the first block.
class DictionaryDataStream final : public BlockDataStream {
public:
    /// Reads a stored stream.
    explicit DictionaryDataStream(RefCntPtr<DataStream> stored);
    /// Writes to `target`, which is empty. 2^bits distinct values have a place.
    DictionaryDataStream(RefCntPtr<DataStream> target, unsigned width, unsigned bits, unsigned block);

    std::wstring_view GetEncodingName() const override { return L"dict"; }
    bool HasSameLayout(const EncodedDataStream& other) const override;

protected:
    uint64_t GetDictionarySize() const override { return uint64_t{GetWidth()} << GetBits(); }
    void DecodeBlocks(const char* in, const char* in_end, uint64_t blocks, char* out) const override;
    void CheckFits(const char* previous, const char* cells, uint64_t count) override;
    void EncodeBlock(const char* cells, unsigned count, unsigned* packed, char* prefix) const override;
    void WriteDictionary() override;
    int64_t GetHeaderBase() const override { return 0; }
    RefCntPtr<EncodedDataStream> MakeFork(RefCntPtr<DataStream> delegate) const override;
    [[noreturn]] void ThrowSeek() const override;

private:
    DictionaryDataStream(const DictionaryDataStream& other, RefCntPtr<DataStream> delegate);
    void Initialise();
    void ReadEncoder();

    unpack_function m_unpack = nullptr;   // to what look_up takes
    std::vector<char> m_dictionary;       // GetDictionarySize() bytes
    RefCntPtr<IntegerEncoder> m_encoder;  // for writing; null until then in a stream that was stored
};

}  // namespace qve
