#include "storage/stream/ResidentDataStream.h"

#include "storage/stream/status.h"
#include "system/QuillonException.h"

namespace qve {

ResidentDataStream::ResidentDataStream(RefCntPtr<DataStream> delegate)
    : DelegatedDataStream(std::move(delegate), "ResidentDataStream") {
    ReadCache();
}

void ResidentDataStream::ReadCache() {
    const DataStream& stream = *GetDelegate();
    m_size = stream.GetSize();
    m_windowCursor = stream.GetCursor();
    m_windowLimit = stream.GetLimit();
    m_input = stream.GetInput(0);
    m_offset = 0;
}

void ResidentDataStream::ThrowGetInput() {
    throw QVE_InvalidArgument(status::ResidentDataStream_GetInput, "ResidentDataStream::GetInput");
}

char* ResidentDataStream::GetOutput(uint64_t offset) {
    return GetDelegate()->GetOutput(m_offset + offset);
}

uint64_t ResidentDataStream::Seek(uint64_t position, uint64_t minimum) {
    // Against the end as well: a window that reaches it satisfies any minimum.
    const uint64_t windowEnd = m_windowCursor + m_windowLimit;
    const bool inside =
        position >= m_windowCursor && position <= windowEnd && (minimum <= windowEnd - position || windowEnd == m_size);
    if (inside) {
        m_offset = position - m_windowCursor;
    } else {
        GetDelegate()->Seek(position, minimum);
        ReadCache();
    }
    return GetLimit();
}

uint64_t ResidentDataStream::Purge() {
    const uint64_t released = GetDelegate()->Purge();
    ReadCache();
    return released;
}

RefCntPtr<DataStream> ResidentDataStream::Fork(bool readOnly) {
    return MakeRef<ResidentDataStream>(GetDelegate()->Fork(readOnly));
}

void ResidentDataStream::Extend(uint64_t count) {
    GetDelegate()->Extend(count);
    ReadCache();
}

void ResidentDataStream::Resize(uint64_t size) {
    GetDelegate()->Resize(size);
    ReadCache();
}

void ResidentDataStream::Append(DataStream& from) {
    GetDelegate()->Append(from);
    ReadCache();
}

void ResidentDataStream::Append(const void* bytes, uint64_t count) {
    GetDelegate()->Append(bytes, count);
    ReadCache();
}

void ResidentDataStream::SetDelegate(RefCntPtr<DataStream> delegate) {
    DelegatedDataStream::SetDelegate(std::move(delegate));
    ReadCache();
}

}  // namespace qve
