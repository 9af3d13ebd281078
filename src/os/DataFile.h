#pragma once

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "system/RefCntObject.h"

namespace qve {

/// An open file: the thing that streams and mappings over it share. No lock of its own; Write, Resize, Rename and
/// Close belong to one thread at a time. A stream over it: FileDataStream::OpenStream.
class DataFile : public RefCntObject {
public:
    /// Opens the file, which must exist. Throws as OS does.
    /// @param temporary the file is removed when it is closed
    /// @param file an open file to use instead; it is not closed by this object
    DataFile(std::wstring_view path, bool writable, bool temporary = false, FILE* file = nullptr);
    ~DataFile() override;
    DataFile(const DataFile&) = delete;
    DataFile& operator=(const DataFile&) = delete;

    const std::wstring& GetPath() const { return m_path; }
    bool IsWritable() const { return m_writable; }
    bool IsTemporary() const { return m_temporary; }
    /// The number of this file in metrics, "dfid".
    uint64_t GetId() const { return m_id; }
    int GetDescriptor() const;

    /// Opens the file again after Close; nothing when it is open.
    void Open();
    /// Closes the file, and removes it when it is temporary. Mappings live on.
    void Close();

    /// The length of the contents in bytes, as it was at the opening or as Resize and Write left it. Room that is
    /// reserved behind the contents does not count.
    uint64_t GetSize() const { return m_size; }
    /// Takes the length of the contents from the system, and drops the notion of room behind them.
    uint64_t UpdateSize();
    /// Sets the length of the contents, with room for growth on disk up to `capacity` bytes; less than `size` means
    /// none. Growing reserves the blocks first, so that a write into a mapping cannot run out of disk: a full disk is
    /// status 100 here. Closing the file gives the room back.
    void Resize(uint64_t size, uint64_t capacity = 0);
    /// Gives back the room behind the contents. Closing does so too, but has nobody to tell when it fails.
    void Trim();
    /// The length on disk, with the room.
    uint64_t GetCapacity() const { return m_capacity; }
    /// Appends at the position of the file, which begins at 0.
    void Write(const void* bytes, size_t count);
    void Flush();
    /// Overwrites `count` bytes from `position`. Mappings of the file see them.
    void WriteAt(uint64_t position, const void* bytes, size_t count);
    /// Reads exactly `count` bytes from `position`; throws when the file ends before.
    void Read(uint64_t position, void* bytes, size_t count) const;
    /// Moves the file; it is no longer temporary then.
    void Rename(std::wstring_view path);

    /// Whether mappings of this file take the whole of it. Begins as MappedFile::s_MemoryMapEntireFile says and is
    /// cleared for good when the address space does not suffice.
    bool MapsEntireFile() const { return m_mapEntireFile.load(std::memory_order_relaxed); }
    void ClearMapEntireFile() { m_mapEntireFile.store(false, std::memory_order_relaxed); }

private:
    std::wstring m_path;
    FILE* m_file;
    bool m_writable;
    bool m_temporary;
    bool m_ownFile;
    uint64_t m_size = 0;
    uint64_t m_capacity = 0;
    uint64_t m_position = 0;  // of Write
    uint64_t m_id;
    std::atomic<bool> m_mapEntireFile;
};

}  // namespace qve
