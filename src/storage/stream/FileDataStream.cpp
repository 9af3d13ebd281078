#include "storage/stream/FileDataStream.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <vector>

#include "metrics/Scope.h"
#include "os/Path.h"
#include "storage/stream/status.h"
#include "system/QuillonException.h"
#include "telemetry/LogScopeTime.h"

namespace qve {

/// What forks share. All offsets are in the file.
struct FileDataStream::StreamState : RefCntObject {
    StreamState(RefCntPtr<DataFile> dataFile, uint64_t first, uint64_t last, bool canWrite)
        : file(std::move(dataFile)), begin(first), end(last), capacity(last), writable(canWrite) {}

    RefCntPtr<DataFile> file;
    uint64_t begin;     // of the first byte
    uint64_t end;       // behind the logical last byte
    uint64_t capacity;  // behind the allocated last byte
    bool writable;
    std::mutex acceleratorMutex;
    RefCntPtr<StreamAccelerator> accelerator;
};

namespace {

constexpr uint64_t minimalPages = 2;        // a page limit below this is given up
constexpr uint64_t writeThrough = 1 << 14;  // appends from this size on need no window

uint64_t round_up(uint64_t bytes, uint64_t unit) {
    return (bytes + unit - 1) / unit * unit;
}

}  // namespace

RefCntPtr<FileDataStream> FileDataStream::OpenStream(RefCntPtr<DataFile> file, uint64_t begin, uint64_t size) {
    if (begin + size < begin) throw QVE_InvalidArgument(status::FileDataStream_Size, "FileDataStream::OpenStream");
    const bool writable = file->IsWritable();
    return MakeRef<FileDataStream>(std::move(file), begin, begin + size, writable);
}

FileDataStream::FileDataStream(RefCntPtr<DataFile> file, uint64_t begin, uint64_t end, bool writable)
    : FileDataStream(MakeRef<StreamState>(std::move(file), begin, end, writable)) {
    Seek(0, GetPageLimit());
}

FileDataStream::FileDataStream(RefCntPtr<StreamState> state)
    : DataStream("FileDataStream"), m_state(std::move(state)), m_position(m_state->begin) {}

FileDataStream::~FileDataStream() = default;

const RefCntPtr<DataFile>& FileDataStream::GetFile() const {
    return m_state->file;
}

uint64_t FileDataStream::Begin() const {
    return m_state->begin;
}

uint64_t FileDataStream::GetSize() const {
    return m_state->end - m_state->begin;
}

uint64_t FileDataStream::GetStorageSize() const {
    return m_state->capacity - m_state->begin;
}

uint64_t FileDataStream::GetLimit() const {
    const uint64_t end = std::min(m_state->end, m_windowEnd);
    return m_position >= m_windowBegin && m_position < end ? end - m_position : 0;
}

const char* FileDataStream::GetInput(uint64_t offset) const {
    if (offset > GetLimit()) throw QVE_InvalidArgument(status::FileDataStream_GetInput, "FileDataStream::GetInput");
    if (offset == 0 && GetLimit() == 0) return &m_noBytes;
    return m_address + (m_position - m_windowBegin) + offset;
}

char* FileDataStream::GetOutput(uint64_t offset) {
    if (!m_state->writable)
        throw QVE_InvalidArgument(status::FileDataStream_GetOutputReadOnly, "FileDataStream::GetOutput");
    if (offset > GetLimit()) throw QVE_InvalidArgument(status::FileDataStream_GetOutput, "FileDataStream::GetOutput");
    if (offset == 0 && GetLimit() == 0) return &m_noBytes;
    return m_address + (m_position - m_windowBegin) + offset;
}

uint64_t FileDataStream::Seek(uint64_t position, uint64_t minimum) {
    if (position > GetSize()) throw QVE_InvalidArgument(status::FileDataStream_Seek, "FileDataStream::Seek");
    const uint64_t offset = m_state->begin + position;
    minimum = std::min(minimum, m_state->end - offset);
    const bool covered = m_mapped && offset >= m_windowBegin && offset + minimum <= m_windowEnd;
    if (!covered) {
        Unmap();
        const uint64_t alignment = MappedFile::Alignment();
        SetPageLimit(round_up(std::max(GetPageLimit(), uint64_t{1}), alignment));
        if (offset < m_state->end) Map(offset, minimum);
    }
    m_position = offset;
    return GetLimit();
}

void FileDataStream::Unmap() {
    m_mapped.reset();
    m_address = nullptr;
    m_windowBegin = m_windowEnd = 0;
}

void FileDataStream::Map(uint64_t offset, uint64_t count) {
    const uint64_t alignment = MappedFile::Alignment();
    const uint64_t first = offset / alignment;
    const uint64_t needed = round_up(offset + count, alignment) / alignment - first;
    const uint64_t last = round_up(m_state->capacity, alignment) / alignment;
    const uint64_t streamPages = last - m_state->begin / alignment;
    for (;;) {
        const uint64_t limitPages = GetPageLimit() / alignment;
        const uint64_t pages = std::min(std::max(needed, limitPages), streamPages);
        const uint64_t begin = std::min(first, last - pages) * alignment;
        const uint64_t size = std::min(pages * alignment, m_state->capacity - begin);
        const bool entireFile = m_state->file->MapsEntireFile();
        try {
            m_mapped = MakeRef<MappedFile>(m_state->file, begin, size, m_state->writable, entireFile);
            m_address = m_mapped->GetAddress();
            m_windowBegin = begin;
            m_windowEnd = begin + size;
            return;
        } catch (const QVE_RuntimeError& fault) {
            if (entireFile) {
                m_state->file->ClearMapEntireFile();
                continue;
            }
            // A smaller window helps only against a shortage of address space, and only if less was asked for.
            const bool smallerHelps = !m_mapped && needed < limitPages && MappedFile::IsShortage(fault);
            if (smallerHelps && limitPages >= minimalPages) {
                SetPageLimit((limitPages - 1) * alignment);
                continue;
            }
            std::string text = fault.GetText() + "\n - Path: " + Path::utf8path(m_state->file->GetPath()) +
                               " Limit: " + std::to_string(size) + " PageLimit: " + std::to_string(GetPageLimit());
            if (smallerHelps) text += " Min Pages: " + std::to_string(minimalPages);
            const int status = fault.GetStatus();
            throw QVE_RuntimeError(status == 0 ? status::FileDataStream_Map : status, text);
        }
    }
}

uint64_t FileDataStream::Load(uint64_t position, uint64_t count) const {
    const uint64_t page = MappedFile::Alignment();
    const uint64_t offset = m_state->begin + position;
    const uint64_t begin = std::max(offset, m_windowBegin);
    const uint64_t end = std::min({offset + count, m_windowEnd, m_state->end});
    if (count < page || begin >= end) return 0;
    Metrics::Scope scope("FileDataStream::Load", Metrics::Bits::Files);
    LogScopeTime time("FileDataStream::Load", 1.0, end - begin);
    const volatile char* bytes = m_address - m_windowBegin;
    uint64_t sum = 0;
    for (uint64_t at = begin; at < end; at += page) sum += static_cast<unsigned char>(bytes[at]);
    return sum;
}

uint64_t FileDataStream::Purge() {
    const uint64_t released = m_windowEnd - m_windowBegin;
    Unmap();
    m_position = m_state->end;
    return released;
}

RefCntPtr<DataStream> FileDataStream::Fork(bool) {
    RefCntPtr<FileDataStream> fork(new FileDataStream(m_state));
    CopyIdentity(*fork);
    if (!m_state->writable) {
        // What is mapped for reading serves all: its pages need not be brought in for each fork anew.
        fork->m_mapped = m_mapped;
        fork->m_address = m_address;
        fork->m_windowBegin = m_windowBegin;
        fork->m_windowEnd = m_windowEnd;
    }
    return fork;
}

StreamAccelerator* FileDataStream::GetAccelerator() const {
    if (!m_accelerator) {
        std::lock_guard lock(m_state->acceleratorMutex);
        m_accelerator = m_state->accelerator;
    }
    return m_accelerator.get();
}

void FileDataStream::SetAccelerator(RefCntPtr<StreamAccelerator> accelerator) {
    std::lock_guard lock(m_state->acceleratorMutex);
    m_state->accelerator = accelerator;
    m_accelerator = std::move(accelerator);
}

bool FileDataStream::CanExtend() const {
    return m_state->writable;
}

void FileDataStream::Extend(uint64_t count) {
    const uint64_t old = GetSize();
    Resize(old + count);
    Seek(old, count);
}

void FileDataStream::Resize(uint64_t size) {
    SetSize(size, size);
}

void FileDataStream::SetSize(uint64_t size, uint64_t room) {
    const uint64_t unit = round_up(65536, MappedFile::Alignment());
    if (room > INT64_MAX - m_state->begin - unit)
        throw QVE_InvalidArgument(status::FileDataStream_Size, "FileDataStream::Resize");
    const uint64_t end = m_state->begin + size;
    const uint64_t capacity = m_state->begin + round_up(room, unit);
    // A window that reaches behind the new end of the file could fault.
    if (capacity < m_state->capacity) Unmap();
    if (end < m_state->end) {
        // What stays behind the new end is room, and room is 0.
        const std::vector<char> zeros(std::min(m_state->end, capacity) - end);
        m_state->file->WriteAt(end, zeros.data(), zeros.size());
    }
    m_state->file->Resize(end, capacity);
    m_state->capacity = capacity;
    m_state->end = end;
    m_position = std::min(m_position, end);
}

void FileDataStream::Append(DataStream& from) {
    AppendWindows(from);
}

void FileDataStream::Append(const void* bytes, uint64_t count) {
    if (count == 0) return;
    const uint64_t old = GetSize();
    const uint64_t position = m_position;
    const uint64_t room = m_state->capacity - m_state->begin;
    // A long file grows by a part of itself, so that the windows of its readers last.
    SetSize(old + count, old + count <= room ? room : old + count + old / 8);
    if (count >= writeThrough) {
        m_state->file->WriteAt(m_state->begin + old, bytes, count);
    } else {
        Seek(old, count);
        std::memcpy(GetOutput(0), bytes, count);
        m_position = position;
    }
}

bool FileDataStream::Rename(const std::wstring& path) {
    m_state->file->Rename(path);
    return true;
}

}  // namespace qve
