#include "storage/EncodedDataStream.h"

#include <algorithm>
#include <cstring>

#include "storage/status.h"
#include "system/QuillonException.h"

namespace qve {

EncodedDataStream::EncodedDataStream(RefCntPtr<DataStream> delegate, const char* typeName)
    : DelegatedDataStream(std::move(delegate), typeName), m_input(&m_noBytes) {}

uint64_t EncodedDataStream::Seek(uint64_t position, uint64_t minimum) {
    if (position > m_length) ThrowSeek();
    minimum = std::min(minimum, m_length - position);
    if (position < m_bufferBegin || position + minimum > m_bufferBegin + m_bufferSize ||
        (position == m_bufferBegin + m_bufferSize && position < m_length)) {
        if (position < m_length) {
            if (m_dirty) Flush();
            const uint64_t wanted = std::max(minimum, uint64_t{m_width});
            Decoded window = GetWindow(position, wanted);
            m_waiting = window.size > 0;
            if (!m_waiting) window = Decode(position, wanted, m_buffer);
            m_bufferBegin = window.begin;
            m_bufferSize = std::min(window.size, m_length - window.begin);
        } else {
            m_waiting = false;
            m_bufferBegin = position;
            m_bufferSize = 0;
        }
    }
    m_cursor = position;
    m_limit = m_bufferBegin + m_bufferSize - position;
    PointToCursor();
    return m_limit;
}

void EncodedDataStream::PointToCursor() {
    if (m_waiting) return;
    m_input = m_bufferSize == 0 ? &m_noBytes : m_buffer.data() + (m_cursor - m_bufferBegin);
}

void EncodedDataStream::DecodeWaiting() {
    Decode(m_bufferBegin, m_bufferSize, m_buffer);
    m_waiting = false;
    PointToCursor();
}

void EncodedDataStream::DropWindow() {
    m_bufferBegin = m_bufferSize = 0;
    m_waiting = false;
    m_limit = 0;
    m_input = &m_noBytes;
}

uint64_t EncodedDataStream::Load(uint64_t, uint64_t) const {
    return 0;
}

uint64_t EncodedDataStream::Purge() {
    if (m_dirty) Flush();
    DropWindow();
    m_cursor = m_length;
    const uint64_t released = m_buffer.GetCapacity();
    m_buffer.Release();
    return released + GetDelegate()->Purge();
}

RefCntPtr<DataStream> EncodedDataStream::Fork(bool readOnly) {
    if (m_dirty) Flush();
    RefCntPtr<EncodedDataStream> fork = MakeFork(GetDelegate()->Fork(readOnly));
    fork->m_width = m_width;
    fork->m_length = m_length;
    CopyIdentity(*fork);
    return fork;
}

void EncodedDataStream::Append(const void* bytes, uint64_t count) {
    if (count % m_width != 0) throw QVE_InvalidArgument(status::EncodedDataStream_Append, "EncodedDataStream::Append");
    if (count == 0) return;
    DropWindow();
    Encode(static_cast<const char*>(bytes), count);
    m_length += count;
    m_dirty = true;
}

void EncodedDataStream::WriteStored(uint64_t offset, const void* bytes, uint64_t count) {
    DataStream& stored = *GetDelegate();
    const char* from = static_cast<const char*>(bytes);
    const uint64_t size = stored.GetSize();
    const uint64_t overlaid = offset < size ? std::min(count, size - offset) : 0;
    for (uint64_t done = 0; done < overlaid;) {
        const uint64_t limit = std::min(stored.Seek(offset + done, overlaid - done), overlaid - done);
        std::memcpy(stored.GetOutput(0), from + done, limit);
        done += limit;
    }
    stored.Append(from + overlaid, count - overlaid);
}

bool EncodedDataStream::ReadStored(uint64_t offset, void* bytes, uint64_t count) {
    DataStream& stored = *GetDelegate();
    char* to = static_cast<char*>(bytes);
    if (stored.GetSize() < offset || stored.GetSize() - offset < count) return false;
    while (count > 0) {
        const uint64_t limit = std::min(stored.Seek(offset, count), count);
        std::memcpy(to, stored.GetInput(0), limit);
        to += limit;
        offset += limit;
        count -= limit;
    }
    return true;
}

char* EncodedDataStream::GetOutput(uint64_t) {
    throw QVE_InvalidArgument(status::EncodedDataStream_GetOutput, "EncodedDataStream::GetOutput");
}

void EncodedDataStream::Extend(uint64_t) {
    throw QVE_InvalidArgument(status::EncodedDataStream_Extend, "EncodedDataStream::Extend");
}

void EncodedDataStream::Resize(uint64_t) {
    throw QVE_InvalidArgument(status::EncodedDataStream_Resize, "EncodedDataStream::Resize");
}

void EncodedDataStream::ThrowGetInput() {
    throw QVE_InvalidArgument(status::EncodedDataStream_GetInput, "EncodedDataStream::GetInput");
}

}  // namespace qve
