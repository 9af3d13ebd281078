#pragma once

#include "os/GrowingMemory.h"
#include "storage/stream/DataStream.h"

namespace qve {

/// Bytes in memory. A read-only fork freezes both sides for good.
class MemoryDataStream final : public DataStream {
public:
    MemoryDataStream();
    /// Begins with a copy of these bytes.
    MemoryDataStream(const void* bytes, uint64_t count);

    uint64_t GetSize() const override;
    uint64_t GetCursor() const override { return m_cursor; }
    uint64_t GetLimit() const override { return GetSize() - m_cursor; }
    const char* GetInput(uint64_t offset) const override;
    char* GetOutput(uint64_t offset) override;
    uint64_t Seek(uint64_t position, uint64_t minimum) override;
    bool IsResident() const override { return true; }
    uint64_t Purge() override { return 0; }
    /// Only with `readOnly`.
    RefCntPtr<DataStream> Fork(bool readOnly) override;
    bool CanExtend() const override { return m_writable; }
    void Extend(uint64_t count) override;
    void Resize(uint64_t size) override;
    void Append(DataStream& from) override;
    void Append(const void* bytes, uint64_t count) override;

private:
    struct Bytes : RefCntObject {
        GrowingMemory data;
    };
    explicit MemoryDataStream(RefCntPtr<Bytes> bytes);

    uint64_t m_cursor = 0;
    bool m_writable = true;
    char m_noBytes = 0;  // what GetInput and GetOutput point to while there are none
    RefCntPtr<Bytes> m_bytes;
};

}  // namespace qve
