#include "ingest/TextDataStream.h"

#include <algorithm>
#include <string>

#include "ingest/status.h"
#include "system/QuillonException.h"

namespace qve {
namespace {

constexpr uint64_t block_size = 1 << 18;

[[noreturn]] void RaiseReadOnly(const char* operation) {
    throw QVE_LogicError(status::TextDataStream_ReadOnly, std::string("TextDataStream::") + operation);
}

}  // namespace

uint64_t TextDataStream::Seek(uint64_t position, uint64_t minimum) {
    if (position < m_bufferStart) {
        Purge();
        Rewind();
    }
    // Drops what lies before the cursor, and reads until there is enough behind it.
    for (;;) {
        const uint64_t available = m_bufferStart + m_buffer.size();
        if (position > m_bufferStart) {
            const uint64_t dropped = std::min(position, available) - m_bufferStart;
            m_buffer.erase(m_buffer.begin(), m_buffer.begin() + static_cast<std::ptrdiff_t>(dropped));
            m_bufferStart += dropped;
        }
        if (m_ended || (position <= available && available - position >= minimum)) break;
        const uint64_t missing = position + minimum - available;
        m_ended = !ReadNextBlock(m_buffer, std::max(missing, block_size));
    }
    m_offset = std::min<uint64_t>(position - std::min(position, m_bufferStart), m_buffer.size());
    return GetLimit();
}

uint64_t TextDataStream::Purge() {
    const uint64_t released = m_buffer.size();
    m_buffer.clear();
    m_bufferStart = 0;
    m_offset = 0;
    m_ended = false;
    Rewind();
    return released;
}

char* TextDataStream::GetOutput(uint64_t) {
    RaiseReadOnly("GetOutput");
}
void TextDataStream::Extend(uint64_t) {
    RaiseReadOnly("Extend");
}
void TextDataStream::Resize(uint64_t) {
    RaiseReadOnly("Resize");
}
void TextDataStream::Append(DataStream&) {
    RaiseReadOnly("Append");
}
void TextDataStream::Append(const void*, uint64_t) {
    RaiseReadOnly("Append");
}

}  // namespace qve
