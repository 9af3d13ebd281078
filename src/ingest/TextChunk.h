#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "ingest/FieldSplitter.h"
#include "ingest/TextColumnParser.h"

namespace qve {

class DataStream;

/// A stretch of whole records of a text with its fields found: bytes of its own, so that chunks can be read and split
/// while others are parsed.
class TextChunk {
public:
    /// No record is longer than this: what has no end by then ends the text.
    static constexpr size_t largest = size_t{1} << 30;

    /// Reads records from `position` on, at first about `size` bytes of them and more when no record ends there, and
    /// splits them. False when there is none.
    bool Read(DataStream& stream, uint64_t position, size_t size, const FieldSplitter& splitter);
    /// Arranges the fields as a fixed number of columns.
    void Arrange(unsigned columns);
    /// The greatest number of fields of a record.
    unsigned CountColumns() const;

    /// Only after Arrange, which leaves out empty lines.
    unsigned GetRecords() const { return m_records; }
    TextFields GetFields(unsigned record, unsigned place) const;
    std::string_view GetField(unsigned record, unsigned place) const;

    /// Of the text: where the chunk begins, and where the next one does.
    uint64_t GetBegin() const { return m_position; }
    uint64_t GetEnd() const { return m_position + m_split.length; }
    /// Bytes that were read, the beginning of the next record among them.
    size_t GetSize() const { return m_text.size(); }
    /// How many records were split, empty lines among them.
    size_t GetLines() const { return m_split.records.size(); }
    /// Whether the text ends in what was read.
    bool IsLast() const { return m_last; }

private:
    std::vector<char> m_text;
    uint64_t m_position = 0;
    bool m_last = false;
    SplitText m_split;
    std::vector<unsigned> m_begins;
    std::vector<unsigned> m_ends;
    bool m_ragged = false;
    unsigned m_columns = 1;
    unsigned m_records = 0;
};

}  // namespace qve
