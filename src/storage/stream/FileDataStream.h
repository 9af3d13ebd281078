#pragma once

#include "os/DataFile.h"
#include "os/MappedFile.h"
#include "storage/stream/DataStream.h"

namespace qve {

/// A stream over a part of a file, read and written through a mapped window. Forks share the file and its growth, each
/// with a window of its own; that of a fork for reading begins as its parent's. A full disk shows when the stream
/// grows, as status 100, and never when it is written to.
class FileDataStream final : public DataStream {
public:
    /// A stream over `size` bytes of `file` from `begin`, writable as the file is. This is the way to read a DataFile.
    static RefCntPtr<FileDataStream> OpenStream(RefCntPtr<DataFile> file, uint64_t begin, uint64_t size);
    /// The same over the file's bytes from `begin` to `end`. Maps the first window at once, and throws when it cannot.
    FileDataStream(RefCntPtr<DataFile> file, uint64_t begin, uint64_t end, bool writable);
    ~FileDataStream() override;

    const RefCntPtr<DataFile>& GetFile() const;

    uint64_t GetSize() const override;
    uint64_t GetStorageSize() const override;
    uint64_t GetCursor() const override { return m_position - Begin(); }
    uint64_t GetLimit() const override;
    const char* GetInput(uint64_t offset) const override;
    char* GetOutput(uint64_t offset) override;
    uint64_t Seek(uint64_t position, uint64_t minimum) override;
    bool IsResident() const override { return false; }
    uint64_t Load(uint64_t position, uint64_t count) const override;
    uint64_t Purge() override;
    RefCntPtr<DataStream> Fork(bool readOnly) override;
    bool CanExtend() const override;
    void Extend(uint64_t count) override;
    /// Grows and shrinks the file in steps of 64 KiB or more; the logical size is the stream's alone.
    void Resize(uint64_t size) override;
    void Append(DataStream& from) override;
    void Append(const void* bytes, uint64_t count) override;
    bool Rename(const std::wstring& path) override;
    /// Forks share one index, whichever of them it was built for. It lives as long as one of them.
    StreamAccelerator* GetAccelerator() const override;
    void SetAccelerator(RefCntPtr<StreamAccelerator> accelerator) override;

private:
    struct StreamState;
    explicit FileDataStream(RefCntPtr<StreamState> state);
    uint64_t Begin() const;
    /// Changes the length, and makes room in the file for `room` bytes.
    void SetSize(uint64_t size, uint64_t room);
    void Map(uint64_t offset, uint64_t count);
    void Unmap();

    RefCntPtr<StreamState> m_state;
    uint64_t m_position;         // the cursor, as an offset in the file
    uint64_t m_windowBegin = 0;  // offsets in the file; equal when nothing is mapped
    uint64_t m_windowEnd = 0;
    char* m_address = nullptr;  // of m_windowBegin
    char m_noBytes = 0;         // what GetInput and GetOutput point to while the window is empty
    RefCntPtr<MappedFile> m_mapped;
    // The common one as this stream has seen it: another fork may exchange that while this one is in use.
    mutable RefCntPtr<StreamAccelerator> m_accelerator;
};

}  // namespace qve
