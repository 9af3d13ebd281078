#include "storage/stream/TempFileDataStream.h"

#include "metrics/Scope.h"
#include "os/OS.h"
#include "storage/stream/FileDataStream.h"
#include "storage/stream/MemoryDataStream.h"

namespace qve {

TempFileDataStream::TempFileDataStream() : DelegatedDataStream(MakeRef<MemoryDataStream>(), "TempFileDataStream") {}

TempFileDataStream::TempFileDataStream(RefCntPtr<DataStream> delegate, bool inFile, std::wstring path)
    : DelegatedDataStream(std::move(delegate), "TempFileDataStream"), m_path(std::move(path)), m_inFile(inFile) {}

TempFileDataStream::~TempFileDataStream() = default;

void TempFileDataStream::SwitchToFile() {
    if (m_inFile) return;
    Metrics::Scope scope("TempFileDataStream::SwitchToFile", Metrics::Bits::Storage);
    const RefCntPtr<DataStream> memory = GetDelegate();
    const uint64_t cursor = memory->GetCursor();
    const uint64_t limit = memory->GetLimit();

    const std::wstring path = OS::mkstemp();
    const auto file = MakeRef<DataFile>(path, true, true);
    const auto stream = FileDataStream::OpenStream(file, 0, 0);
    stream->SetPageLimit(memory->GetPageLimit());
    stream->SetGuid(memory->GetGuid());
    if (memory->IsOwned()) stream->SetOwned();
    try {
        AppendData(*stream, *memory);
        stream->Seek(cursor, limit);
    } catch (...) {
        memory->Seek(cursor, limit);
        throw;
    }

    // From here on nothing fails: a full disk leaves the stream as it was.
    SetDsid(std::to_string(file->GetId()) + ":" + GetDsid());
    scope.NameValue("new_id", GetDsid());
    const RefCntPtr<StreamAccelerator> accelerator = memory->GetAccelerator();
    memory->SetAccelerator(nullptr);
    SetDelegate(stream);
    SetAccelerator(accelerator);
    m_path = path;
    m_inFile = true;
}

void TempFileDataStream::SwitchIfLarger(uint64_t size) {
    if (!m_inFile && size > GetPageLimit()) SwitchToFile();
}

uint64_t TempFileDataStream::Purge() {
    if (!m_inFile) {
        const uint64_t released = GetSize();
        GetDelegate()->Seek(released, 0);
        SwitchToFile();
        GetDelegate()->Purge();
        return released;
    }
    return GetDelegate()->Purge();
}

RefCntPtr<DataStream> TempFileDataStream::Fork(bool readOnly) {
    std::lock_guard lock(m_mutex);
    if (!readOnly || GetDelegate()->CanExtend()) SwitchToFile();
    RefCntPtr<TempFileDataStream> fork(new TempFileDataStream(GetDelegate()->Fork(readOnly), m_inFile, m_path));
    CopyIdentity(*fork);
    return fork;
}

void TempFileDataStream::Extend(uint64_t count) {
    SwitchIfLarger(GetSize() + count);
    GetDelegate()->Extend(count);
}

void TempFileDataStream::Resize(uint64_t size) {
    SwitchIfLarger(size);
    GetDelegate()->Resize(size);
}

void TempFileDataStream::Append(DataStream& from) {
    SwitchIfLarger(GetSize() + (from.GetSize() - from.GetCursor()));
    GetDelegate()->Append(from);
}

void TempFileDataStream::Append(const void* bytes, uint64_t count) {
    SwitchIfLarger(GetSize() + count);
    GetDelegate()->Append(bytes, count);
}

bool TempFileDataStream::Rename(const std::wstring& path) {
    if (!GetDelegate()->Rename(path)) return false;
    m_path.clear();
    return true;
}

}  // namespace qve
