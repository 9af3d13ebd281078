#include "storage/stream/MemoryDataStream.h"

#include <algorithm>

#include "storage/stream/status.h"
#include "system/QuillonException.h"

namespace qve {

MemoryDataStream::MemoryDataStream() : MemoryDataStream(MakeRef<Bytes>()) {}

MemoryDataStream::MemoryDataStream(const void* bytes, uint64_t count) : MemoryDataStream() {
    m_bytes->data.Append(bytes, count);
}

MemoryDataStream::MemoryDataStream(RefCntPtr<Bytes> bytes)
    : DataStream("MemoryDataStream"), m_bytes(std::move(bytes)) {}

uint64_t MemoryDataStream::GetSize() const {
    return m_bytes->data.size();
}

const char* MemoryDataStream::GetInput(uint64_t offset) const {
    if (offset > GetLimit()) throw QVE_InvalidArgument(status::MemoryDataStream_GetInput, "MemoryDataStream::GetInput");
    // An empty vector may have no address of its own, and the result is never null.
    if (m_bytes->data.empty()) return &m_noBytes;
    return m_bytes->data.data() + m_cursor + offset;
}

char* MemoryDataStream::GetOutput(uint64_t offset) {
    if (!m_writable) throw QVE_InvalidArgument(status::MemoryDataStream_GetOutputForked, "MemoryDataStream::GetOutput");
    if (offset > GetLimit())
        throw QVE_InvalidArgument(status::MemoryDataStream_GetOutput, "MemoryDataStream::GetOutput");
    if (m_bytes->data.empty()) return &m_noBytes;
    return m_bytes->data.data() + m_cursor + offset;
}

uint64_t MemoryDataStream::Seek(uint64_t position, uint64_t) {
    if (position > GetSize()) throw QVE_InvalidArgument(status::MemoryDataStream_Seek, "MemoryDataStream::Seek");
    m_cursor = position;
    return GetLimit();
}

RefCntPtr<DataStream> MemoryDataStream::Fork(bool readOnly) {
    if (!readOnly) throw QVE_InvalidArgument(status::MemoryDataStream_Fork, "MemoryDataStream::Fork");
    m_writable = false;
    RefCntPtr<MemoryDataStream> fork(new MemoryDataStream(m_bytes));
    fork->m_writable = false;
    CopyIdentity(*fork);
    return fork;
}

void MemoryDataStream::Extend(uint64_t count) {
    if (count != 0 && !m_writable)
        throw QVE_InvalidArgument(status::MemoryDataStream_Extend, "MemoryDataStream::Extend");
    m_cursor = GetSize();
    m_bytes->data.Resize(m_cursor + count);
}

void MemoryDataStream::Resize(uint64_t size) {
    if (size == GetSize()) return;
    if (!m_writable) throw QVE_InvalidArgument(status::MemoryDataStream_Resize, "MemoryDataStream::Resize");
    m_bytes->data.Resize(size);
    m_cursor = std::min(m_cursor, size);
}

void MemoryDataStream::Append(DataStream& from) {
    if (!m_writable)
        throw QVE_InvalidArgument(status::MemoryDataStream_AppendStream, "MemoryDataStream::Append(DataStream)");
    AppendWindows(from);
}

void MemoryDataStream::Append(const void* bytes, uint64_t count) {
    if (!m_writable)
        throw QVE_InvalidArgument(status::MemoryDataStream_AppendBuffer, "MemoryDataStream::Append(input_buffer)");
    m_bytes->data.Append(bytes, count);
}

}  // namespace qve
