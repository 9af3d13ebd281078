#include "storage/stream/ReadOnlyDataStream.h"

#include <stdexcept>

#include "storage/stream/status.h"
#include "system/QuillonException.h"

namespace qve {

ReadOnlyDataStream::ReadOnlyDataStream(RefCntPtr<DataStream> delegate)
    : DelegatedDataStream(std::move(delegate), "ReadOnlyDataStream") {}

char* ReadOnlyDataStream::GetOutput(uint64_t) {
    throw QVE_InvalidArgument(status::ReadOnlyDataStream_GetOutput, "ReadOnlyDataStream::GetOutput");
}

RefCntPtr<DataStream> ReadOnlyDataStream::Fork(bool readOnly) {
    return MakeRef<ReadOnlyDataStream>(GetDelegate()->Fork(readOnly));
}

void ReadOnlyDataStream::Extend(uint64_t) {
    throw QVE_InvalidArgument(status::ReadOnlyDataStream_Extend, "ReadOnlyDataStream::Extend");
}

void ReadOnlyDataStream::Resize(uint64_t) {
    throw QVE_InvalidArgument(status::ReadOnlyDataStream_Resize, "ReadOnlyDataStream::Resize");
}

void ReadOnlyDataStream::Append(DataStream& from) {
    AppendWindows(from);
}

void ReadOnlyDataStream::Append(const void*, uint64_t count) {
    if (count != 0) throw std::invalid_argument("ReadOnlyDataStream::Append");
}

}  // namespace qve
