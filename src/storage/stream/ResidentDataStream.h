#pragma once

#include "storage/stream/DelegatedDataStream.h"

namespace qve {

/// Keeps the window of another stream in plain members, for readers that hop about in it: size, cursor, limit and input
/// are then inlined reads. To be used over streams whose bytes stay where they are.
class ResidentDataStream final : public DelegatedDataStream {
public:
    explicit ResidentDataStream(RefCntPtr<DataStream> delegate);

    uint64_t GetSize() const override { return m_size; }
    uint64_t GetCursor() const override { return m_windowCursor + m_offset; }
    uint64_t GetLimit() const override { return m_windowLimit - m_offset; }
    const char* GetInput(uint64_t offset) const override {
        if (offset > GetLimit()) ThrowGetInput();
        return m_input + m_offset + offset;
    }
    char* GetOutput(uint64_t offset) override;
    uint64_t Seek(uint64_t position, uint64_t minimum) override;
    bool IsResident() const override { return true; }
    uint64_t Purge() override;
    RefCntPtr<DataStream> Fork(bool readOnly) override;
    void Extend(uint64_t count) override;
    void Resize(uint64_t size) override;
    void Append(DataStream& from) override;
    void Append(const void* bytes, uint64_t count) override;
    void SetDelegate(RefCntPtr<DataStream> delegate) override;

private:
    [[noreturn]] static void ThrowGetInput();
    void ReadCache();

    uint64_t m_size = 0;
    uint64_t m_windowCursor = 0;
    uint64_t m_windowLimit = 0;
    uint64_t m_offset = 0;  // of the cursor in the window
    const char* m_input = nullptr;
};

}  // namespace qve
