#include "ingest/TextChunk.h"

#include <algorithm>

#include "storage/stream/DataStream.h"

namespace qve {

bool TextChunk::Read(DataStream& stream, uint64_t position, size_t size, const FieldSplitter& splitter) {
    m_position = position;
    m_records = 0;
    for (;; size *= 2) {
        const uint64_t limit = stream.Seek(position, size + 1);
        m_last = limit <= size;
        const size_t length = std::min<uint64_t>(limit, size);
        if (length > 0) {
            const char* const text = stream.GetInput(0);
            m_text.assign(text, text + length);
        } else {
            m_text.clear();
        }
        splitter.Split(m_text.data(), length, m_last, m_split);
        if (!m_split.records.empty()) return true;
        if (m_last || size >= largest) return false;
    }
}

unsigned TextChunk::CountColumns() const {
    unsigned columns = 0;
    unsigned before = 0;
    for (const unsigned last : m_split.records) {
        columns = std::max(columns, last - before);
        before = last;
    }
    return columns;
}

void TextChunk::Arrange(unsigned columns) {
    m_columns = columns;
    m_records = static_cast<unsigned>(m_split.records.size());
    m_ragged = false;
    for (unsigned record = 0; record < m_records && !m_ragged; ++record) {
        m_ragged = m_split.records[record] != (record + 1) * columns;
    }
    if (m_ragged) {
        m_records = split_ragged_fields_char_col(m_text.data(), m_split, columns, m_begins, m_ends);
    } else if (m_records > 0) {
        // One entry before the first makes each field begin at the delimiter before its own.
        m_begins.resize(m_split.delimiters.size());
        m_begins[0] = ~0U;
        std::copy(m_split.delimiters.begin(), m_split.delimiters.end() - 1, m_begins.begin() + 1);
    }
}

TextFields TextChunk::GetFields(unsigned record, unsigned place) const {
    const size_t first = size_t{record} * m_columns + place;
    const std::vector<unsigned>& ends = m_ragged ? m_ends : m_split.delimiters;
    return {m_text.data(), m_begins.data() + first, ends.data() + first, m_columns};
}

std::string_view TextChunk::GetField(unsigned record, unsigned place) const {
    const TextFields fields = GetFields(record, place);
    // The first field has its delimiter at -1: this wraps to 0 in 32 bits only.
    const unsigned begin = fields.begins[0] + 1;
    return {fields.text + begin, fields.ends[0] - begin};
}

}  // namespace qve
