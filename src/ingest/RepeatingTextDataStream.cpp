#include "ingest/RepeatingTextDataStream.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "ingest/status.h"
#include "system/QuillonException.h"

namespace qve {

RepeatingTextDataStream::RepeatingTextDataStream(std::string header, std::string body, uint64_t repetitions)
    : m_header(std::move(header)), m_body(std::move(body)), m_repetitions(repetitions) {
    if (m_header.size() > largestHeader) {
        throw QVE_InvalidArgument(status::RepeatingTextDataStream_Header, "RepeatingTextDataStream: Header too big");
    }
    if (m_body.empty()) {
        throw QVE_InvalidArgument(status::RepeatingTextDataStream_Body, "RepeatingTextDataStream: Body too small");
    }
}

RefCntPtr<DataStream> RepeatingTextDataStream::Fork(bool) {
    return MakeRef<RepeatingTextDataStream>(m_header, m_body, m_repetitions);
}

bool RepeatingTextDataStream::ReadNextBlock(std::vector<char>& buffer, uint64_t count) {
    const uint64_t end = m_position + std::min(count, GetSize() - m_position);
    while (m_position < end) {
        const bool inHeader = m_position < m_header.size();
        const uint64_t place = inHeader ? m_position : (m_position - m_header.size()) % m_body.size();
        const std::string_view part = std::string_view(inHeader ? m_header : m_body).substr(place, end - m_position);
        buffer.insert(buffer.end(), part.begin(), part.end());
        m_position += part.size();
    }
    return m_position < GetSize();
}

}  // namespace qve
