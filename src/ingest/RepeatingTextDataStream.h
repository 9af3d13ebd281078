#pragma once

#include <string>

#include "ingest/TextDataStream.h"

namespace qve {

/// A text of any length that takes no room: a header, and behind it a body over and over. For tests and benchmarks.
class RepeatingTextDataStream : public TextDataStream {
public:
    static constexpr uint64_t largestHeader = 1 << 18;

    /// Throws QVE_InvalidArgument 40577 for a header that is longer than largestHeader, and 40578 for a body without a
    /// byte.
    RepeatingTextDataStream(std::string header, std::string body, uint64_t repetitions);

    uint64_t GetSize() const override { return m_header.size() + m_body.size() * m_repetitions; }
    RefCntPtr<DataStream> Fork(bool readOnly) override;

private:
    bool ReadNextBlock(std::vector<char>& buffer, uint64_t count) override;
    void Rewind() override { m_position = 0; }

    const std::string m_header;
    const std::string m_body;
    const uint64_t m_repetitions;
    uint64_t m_position = 0;
};

}  // namespace qve
