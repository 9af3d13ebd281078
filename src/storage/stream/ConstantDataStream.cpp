#include "storage/stream/ConstantDataStream.h"

#include "storage/stream/status.h"
#include "system/QuillonException.h"

namespace qve {

ConstantDataStream::ConstantDataStream(RefCntPtr<DataStream> delegate)
    : DelegatedDataStream(std::move(delegate), "ConstantDataStream") {
    Seek(0, 0);
}

uint64_t ConstantDataStream::Seek(uint64_t, uint64_t) {
    return GetDelegate()->Seek(0, GetDelegate()->GetSize());
}

RefCntPtr<DataStream> ConstantDataStream::Fork(bool readOnly) {
    return MakeRef<ConstantDataStream>(GetDelegate()->Fork(readOnly));
}

void ConstantDataStream::Extend(uint64_t count) {
    if (count != 0) throw QVE_InvalidArgument(status::ConstantDataStream_Extend, "ConstantDataStream::Extend");
}

void ConstantDataStream::Resize(uint64_t) {
    throw QVE_InvalidArgument(status::ConstantDataStream_Resize, "ConstantDataStream::Resize");
}

void ConstantDataStream::Append(DataStream&) {
    throw QVE_InvalidArgument(status::ConstantDataStream_AppendStream, "ConstantDataStream::Append");
}

void ConstantDataStream::Append(const void*, uint64_t) {
    throw QVE_InvalidArgument(status::ConstantDataStream_AppendBuffer, "ConstantDataStream::Append");
}

}  // namespace qve
