#include "storage/stream/DelegatedDataStream.h"

namespace qve {

DelegatedDataStream::DelegatedDataStream(RefCntPtr<DataStream> delegate, const char* typeName)
    : DataStream(typeName), m_delegate(std::move(delegate)) {}

void DelegatedDataStream::SetGuid(Guid guid) {
    DataStream::SetGuid(guid);
    m_delegate->SetGuid(guid);
}

void DelegatedDataStream::SetPageLimit(uint64_t limit) {
    DataStream::SetPageLimit(limit);
    m_delegate->SetPageLimit(limit);
}

void DelegatedDataStream::SetAccelerator(RefCntPtr<StreamAccelerator> accelerator) {
    m_delegate->SetAccelerator(std::move(accelerator));
}

}  // namespace qve
