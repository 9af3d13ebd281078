#pragma once

#include <cstdint>
#include <vector>

#include "storage/stream/DataStream.h"

namespace qve {

/// Base of the streams that text is read from: read-only, moving forward through a buffer of their own. They are not
/// mapped, so that a file which shrinks while it is read ends early and does no harm.
class TextDataStream : public DataStream {
public:
    uint64_t GetCursor() const override { return m_bufferStart + m_offset; }
    uint64_t GetLimit() const override { return m_buffer.size() - m_offset; }
    const char* GetInput(uint64_t offset) const override { return m_buffer.data() + m_offset + offset; }
    /// Going back behind the buffer reads from the start again.
    uint64_t Seek(uint64_t position, uint64_t minimum) override;
    bool IsResident() const override { return false; }
    uint64_t Purge() override;

    // What would change the text throws QVE_LogicError 40568 with the name of the operation.
    char* GetOutput(uint64_t offset) override;
    bool CanExtend() const override { return false; }
    void Extend(uint64_t count) override;
    void Resize(uint64_t size) override;
    void Append(DataStream& from) override;
    void Append(const void* bytes, uint64_t count) override;

protected:
    using DataStream::DataStream;
    /// Appends the next bytes of the text, about `count` of them, to `buffer`; false at the end.
    virtual bool ReadNextBlock(std::vector<char>& buffer, uint64_t count) = 0;
    /// Makes ReadNextBlock begin at the start again.
    virtual void Rewind() = 0;

private:
    std::vector<char> m_buffer;
    uint64_t m_bufferStart = 0;  // the position of the buffer in the text
    uint64_t m_offset = 0;       // of the cursor in the buffer
    bool m_ended = false;
};

}  // namespace qve
