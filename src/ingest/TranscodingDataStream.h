#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "ingest/TextDataStream.h"

namespace qve::QuilICU {
class Converter;
}

namespace qve {

/// Text of any character set as UTF-8, converted block by block as it is read.
class TranscodingDataStream : public TextDataStream {
public:
    /// The bytes that the detection looks at; the setting `charset-sample-size`.
    static std::atomic<uint64_t> s_CharsetSampleSize;

    /// `stream` as UTF-8: itself when it is, else through a converter. `charset` is the name of its character set and
    /// receives the one found when it is empty. A byte order mark is left out. Throws QVE_RuntimeError 40566 and 40567.
    static RefCntPtr<DataStream> CreateUTF8Stream(const RefCntPtr<DataStream>& stream, std::string& charset);

    TranscodingDataStream(RefCntPtr<DataStream> source, std::string charset, uint64_t start);
    ~TranscodingDataStream() override;
    /// An upper bound: only at the end is it known how much a text makes in UTF-8.
    uint64_t GetSize() const override { return 3 * m_source->GetSize(); }
    RefCntPtr<DataStream> Fork(bool readOnly) override;

private:
    bool ReadNextBlock(std::vector<char>& buffer, uint64_t count) override;
    void Rewind() override;

    RefCntPtr<DataStream> m_source;
    const std::string m_charset;
    const uint64_t m_start;
    uint64_t m_position;
    bool m_flushed = false;
    std::unique_ptr<QuilICU::Converter> m_converter;
};

}  // namespace qve
