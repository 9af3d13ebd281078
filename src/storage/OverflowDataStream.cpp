#include "storage/OverflowDataStream.h"

#include "storage/status.h"
#include "system/QuillonException.h"

namespace qve {

OverflowDataStream::OverflowDataStream(RefCntPtr<RunLengthDataStream> delegate, double ratio)
    : DelegatedDataStream(delegate, "OverflowDataStream"), m_watched(std::move(delegate)), m_ratio(ratio) {}

void OverflowDataStream::Append(const void* bytes, uint64_t count) {
    m_watched->Append(bytes, count);
    if (static_cast<double>(m_watched->GetEncodedSize()) > m_ratio * static_cast<double>(m_watched->GetSize()))
        throw QVE_OverflowError(status::OverflowDataStream_Append, "OverflowDataStream::Append");
}

}  // namespace qve
