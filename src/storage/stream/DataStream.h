#pragma once

#include <atomic>
#include <compare>
#include <cstdint>
#include <string>

#include "system/RefCntPtr.h"

namespace qve {

/// What a stream keeps for the layers above: an index over its bytes, built by whoever reads values out of them.
/// Shared by the forks that are made after it was set.
class StreamAccelerator : public RefCntObject {};

/// A byte sequence with a cursor and a window. A reader asks for a window (Seek) and then works on raw pointers into it
/// (GetInput, GetOutput), with no virtual call per value:
///
///     limit = stream->Seek(position, bytes_needed);
///     p = stream->GetInput(0);      // up to `limit` bytes from `p`
///
/// A pointer lives until the next Seek, Purge, Extend, Resize or Append on that stream object. All positions, sizes and
/// offsets are in bytes. One thread per stream object; Fork gives another thread the same bytes.
class DataStream : public RefCntObject {
public:
    /// The identity of a stream within the process.
    struct Guid {
        uint64_t value = 0;
        static constexpr Guid Null() { return {}; }
        /// A new one; from any thread.
        static Guid Next();
        friend constexpr auto operator<=>(const Guid&, const Guid&) = default;
    };

    DataStream(const DataStream&) = delete;
    DataStream& operator=(const DataStream&) = delete;

    /// Marks a stream whose owner alone decides about it; copied to forks.
    virtual bool IsOwned() const { return m_owned; }
    virtual void SetOwned() { m_owned = true; }
    virtual Guid GetGuid() const { return m_guid; }
    virtual void SetGuid(Guid guid) { m_guid = guid; }
    /// The smallest window that Seek will map. A change takes effect at the next Seek.
    virtual uint64_t GetPageLimit() const { return m_pageLimit; }
    virtual void SetPageLimit(uint64_t limit) { m_pageLimit = limit; }
    /// The logical length.
    virtual uint64_t GetSize() const = 0;
    /// The length on disk.
    virtual uint64_t GetStorageSize() const { return GetSize(); }
    /// The position of the window's start.
    virtual uint64_t GetCursor() const = 0;
    /// How many bytes the window has from the cursor on.
    virtual uint64_t GetLimit() const = 0;
    /// The byte at cursor + offset. An offset above GetLimit() is a fault of the caller. Never null.
    virtual const char* GetInput(uint64_t offset) const = 0;
    /// The same for writing.
    virtual char* GetOutput(uint64_t offset) = 0;
    /// A constant text for logs: the kind of stream.
    virtual const char* GetDerivedTypeName() const { return m_typeName; }
    /// Makes at least `minimum` bytes from `position` available, or what there is before the end, and returns
    /// GetLimit(). A position behind the end is a fault; the end itself is not and gives 0.
    virtual uint64_t Seek(uint64_t position, uint64_t minimum) = 0;
    /// True when all bytes are in memory for good, so that a pointer from GetInput lives until the stream is changed.
    virtual bool IsResident() const = 0;
    /// Touches a range so that its pages come into memory. The result only keeps the reads from being left out.
    virtual uint64_t Load(uint64_t position, uint64_t count) const;
    /// Drops the window and returns the number of bytes released.
    virtual uint64_t Purge() = 0;
    /// A second stream over the same bytes, with a cursor of its own.
    virtual RefCntPtr<DataStream> Fork(bool readOnly) = 0;
    virtual bool CanExtend() const = 0;
    /// Grows the stream by `count` bytes and leaves the window on the new ones. They are 0.
    virtual void Extend(uint64_t count) = 0;
    virtual void Resize(uint64_t size) = 0;
    /// Appends what the other has from its cursor to its end.
    virtual void Append(DataStream& from) = 0;
    virtual void Append(const void* bytes, uint64_t count) = 0;
    /// Moves the backing file; false when there is none.
    virtual bool Rename(const std::wstring& path);
    virtual StreamAccelerator* GetAccelerator() const { return m_accelerator.get(); }
    virtual void SetAccelerator(RefCntPtr<StreamAccelerator> accelerator) { m_accelerator = std::move(accelerator); }

    /// The name of the stream in telemetry.
    const std::string& GetDsid() const { return m_dsid; }

    /// Copies `from` over `to` from `position` on, and appends what lies beyond the end of `to`.
    static void OverlayData(DataStream& to, DataStream& from, uint64_t position);
    /// Makes `to` the same bytes as `from`.
    static void CopyData(DataStream& to, DataStream& from);
    /// Puts the bytes of `from` behind those of `to`.
    static void AppendData(DataStream& to, DataStream& from);

    /// The page limit of new streams, in MiB; 0 counts as 1.
    static void SetWorkBufferSize(unsigned megabytes);
    static unsigned GetWorkBufferSize();
    /// Bytes of memory that one statement may take: what is available over the statements that run.
    static uint64_t GetMaxMemoryLimit();
    /// The same, at most 2 GiB.
    static uint64_t GetMaxPageLimit();
    /// How many threads one process uses for statements: half the hardware threads, but at least 2.
    static unsigned GetMaxConcurrency();

    /// The default page limit in bytes.
    static std::atomic<uint64_t> s_maxlimit;
    /// The number of statements that run now; kept by those who run them.
    static std::atomic<unsigned> s_executing;

protected:
    explicit DataStream(const char* typeName = "NOTYPENAME");
    /// Gives a fork its guid, page limit, owned mark and accelerator.
    void CopyIdentity(DataStream& fork) const;
    /// Append(DataStream&) by pieces: what `from` has from its cursor on goes through Append of bytes. Ends by
    /// CancelledException when the operator of the thread's CancelScope was cancelled; what was appended stays.
    void AppendWindows(DataStream& from);
    void SetDsid(std::string dsid) { m_dsid = std::move(dsid); }

private:
    bool m_owned = false;
    Guid m_guid;
    uint64_t m_pageLimit;
    RefCntPtr<StreamAccelerator> m_accelerator;
    std::string m_dsid;
    const char* m_typeName;
};

}  // namespace qve
