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

    /// Lets a page that its file lost under a mapping read as zeros, and counts it, where it would end the process:
    /// files that someone else cuts short. For the whole process, once.
    static void SurviveCutFiles();
    /// How many pages were lost so far.
    static uint64_t GetCutCount() { return s_cuts.load(std::memory_order_acquire); }
    /// To be called before what was read from mappings is used, with the count from before the reading. Throws
    /// QVE_RuntimeError (status::MappedFile_Cut) when pages were lost since; whose they were is not known, so
    /// everything that ran meanwhile fails.
    static void CheckCuts(uint64_t before);

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
    static std::atomic<uint64_t> s_cuts;
};

}  // namespace qve
