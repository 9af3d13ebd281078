#include "storage/DictionaryDataStream.h"

#include <algorithm>

#include "storage/dictionary_look_up.h"
#include "storage/integer_width.h"
#include "storage/status.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

constexpr const char* typeName = "DictionaryDataStream";

}  // namespace

DictionaryDataStream::DictionaryDataStream(RefCntPtr<DataStream> stored)
    : BlockDataStream(std::move(stored), typeName, TypeCode::Dictionary) {
    Initialise();
    CheckStoredSize();
    ReadStored(headerSize, m_dictionary.data(), m_dictionary.size());
}

DictionaryDataStream::DictionaryDataStream(RefCntPtr<DataStream> target, unsigned width, unsigned bits, unsigned block)
    : BlockDataStream(std::move(target), typeName, TypeCode::Dictionary, width, bits, block),
      m_encoder(MakeRef<IntegerEncoder>(1u << bits)) {
    Initialise();
    Begin();
}

DictionaryDataStream::DictionaryDataStream(const DictionaryDataStream& other, RefCntPtr<DataStream> delegate)
    : BlockDataStream(other, std::move(delegate)), m_unpack(other.m_unpack), m_dictionary(other.m_dictionary) {}

void DictionaryDataStream::Initialise() {
    if (!is_integer_width(GetWidth()))
        throw QVE_DomainError(status::DictionaryDataStream_Initialise, "DictionaryDataStream::Initialise: No decoder");
    m_unpack = decode_functype_bits(look_up_index_width(GetWidth(), GetBits()), GetBits());
    // What is packed cannot be above the last entry, so that no look-up needs a check.
    m_dictionary.resize(GetDictionarySize());
}

void DictionaryDataStream::DecodeBlocks(const char* in, const char* in_end, uint64_t blocks, char* out) const {
    constexpr unsigned atOnce = 1024;  // stays in the first-level cache between unpacking and looking up
    alignas(32) char numbers[atOnce * sizeof(uint32_t)];
    for (uint64_t left = blocks * GetBlockLength(); left > 0;) {
        const unsigned n = static_cast<unsigned>(std::min<uint64_t>(left, atOnce));
        m_unpack(in, in_end, n / 32, 0, numbers);
        look_up(numbers, n, m_dictionary.data(), GetWidth(), GetBits(), out);
        in += n / 32 * 4 * GetBits();
        out += uint64_t{n} * GetWidth();
        left -= n;
    }
}

void DictionaryDataStream::ReadEncoder() {
    // The entries in use are not counted in the file: behind them all is 0. One 0 may be in use as well.
    const unsigned width = GetWidth();
    const auto value = [&](unsigned token) {
        return load_integer(m_dictionary.data() + uint64_t{token} * width, width);
    };
    unsigned used = 1u << GetBits();
    while (used > 0 && value(used - 1) == 0) --used;
    m_encoder = MakeRef<IntegerEncoder>(1u << GetBits());
    for (unsigned token = 0; token < used; ++token) {
        if (m_encoder->Add(value(token)) != token) {
            throw QVE_RuntimeError(status::BlockDataStream_Header,
                                   "DictionaryDataStream::Initialise: the dictionary holds a value twice");
        }
    }
    if (used < 1u << GetBits()) m_encoder->Add(0);
}

void DictionaryDataStream::CheckFits(const char*, const char* cells, uint64_t count) {
    constexpr uint64_t atOnce = 1024;
    if (!m_encoder) ReadEncoder();
    unsigned tokens[atOnce];
    for (uint64_t done = 0; done < count; done += atOnce) {
        const uint64_t n = std::min(count - done, atOnce);
        if (!m_encoder->Encode(n, cells + done * GetWidth(), GetWidth(), tokens))
            throw QVE_OverflowError(status::DictionaryDataStream_Overflow, "DictionaryDataStream::FlushData");
    }
}

void DictionaryDataStream::EncodeBlock(const char* cells, unsigned count, unsigned* packed, char*) const {
    m_encoder->Encode(count, cells, GetWidth(), packed);
}

void DictionaryDataStream::WriteDictionary() {
    const std::vector<int64_t>& values = m_encoder->GetValues();
    for (size_t token = 0; token < values.size(); ++token)
        store_integer(m_dictionary.data() + token * GetWidth(), GetWidth(), values[token]);
    WriteStored(headerSize, m_dictionary.data(), m_dictionary.size());
}

bool DictionaryDataStream::HasSameLayout(const EncodedDataStream& other) const {
    const auto* same = dynamic_cast<const DictionaryDataStream*>(&other);
    return same && same->GetBits() == GetBits() && same->GetWidth() == GetWidth();
}

RefCntPtr<EncodedDataStream> DictionaryDataStream::MakeFork(RefCntPtr<DataStream> delegate) const {
    return RefCntPtr<EncodedDataStream>(new DictionaryDataStream(*this, std::move(delegate)));
}

void DictionaryDataStream::ThrowSeek() const {
    throw QVE_OutOfRange(status::DictionaryDataStream_Seek, "DictionaryDataStream::Seek");
}

}  // namespace qve
