#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "os/DataFile.h"
#include "system/QuillonException.h"
#include "system/RefCntPtr.h"

namespace qve {

/// A stretch of a file in memory. The size of the file is checked when it is mapped: a stretch that ends behind the
/// end of the file is refused, so that reading it cannot fault.
class MappedFile : public RefCntObject {
public:
    /// Maps `limit` bytes from `offset`, which must be a multiple of Alignment(). With `entireFile` the whole file is
    /// mapped and the offset only says where GetAddress() points. Throws as OS does.
    MappedFile(RefCntPtr<DataFile> file, uint64_t offset, uint64_t limit, bool writable, bool entireFile = false);
    ~MappedFile() override;
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    /// The byte at the offset. Lives as long as this object.
    char* GetAddress() const { return m_address + (m_offset - m_mappedOffset); }
    /// The stretch that was asked for, in bytes of the file.
    uint64_t GetOffset() const { return m_offset; }
    uint64_t GetLimit() const { return m_limit; }
    bool IsWritable() const { return m_writable; }
    /// The number of this mapping in metrics, "mfid".
    uint64_t GetId() const { return m_id; }
    const RefCntPtr<DataFile>& GetFile() const { return m_file; }

    /// True for a failure that a smaller mapping may not meet: the system had no room, and not the file was too short.
    static bool IsShortage(const QVE_RuntimeError& fault);
    /// The unit of mapping in bytes: the page size of the system.
    static uint64_t Alignment();
    /// Bytes of memory that the process may still take without swapping: what the machine has free or can free, and
    /// what is left of a limit set on the process's control group.
    static uint64_t Available();
    /// Bytes of memory of the machine, or of its control group when that is less; asked for once.
    static uint64_t Physical();

    /// Map whole files instead of windows; read when a file is opened.
    static std::atomic<bool> s_MemoryMapEntireFile;
    /// Keep a registry by address.
    static std::atomic<bool> s_trackingMappedFiles;
    /// What the registry knows of a mapping.
    struct Tracked {
        std::wstring path;
        uint64_t offset;
        uint64_t limit;
        uint64_t id;
    };
    /// The mapping that holds an address; nothing when none does, or when it was made with the registry off.
    static std::optional<Tracked> GetMappedFileFromAddress(const void* address);

private:
    RefCntPtr<DataFile> m_file;
    uint64_t m_offset;
    uint64_t m_limit;
    bool m_writable;
    bool m_tracked = false;
    uint64_t m_id;
    char* m_address = nullptr;
    uint64_t m_mappedOffset;
    uint64_t m_mappedLimit;

    static std::atomic<uint64_t> s_nextID;
};

}  // namespace qve
