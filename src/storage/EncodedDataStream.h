#pragma once

#include <string_view>

#include "storage/DecodeBuffer.h"
#include "storage/stream/DelegatedDataStream.h"

namespace qve {

/// A stream of fixed-width integer cells that its delegate stores compressed. Seek sets the window, and the first
/// GetInput in it decodes into a buffer, so that readers see plain cells and cells that nobody looks at are never
/// decoded; the pointer holds until the next Seek. Cells are written by Append alone, and come to the delegate by
/// Flush, which every reading of new cells implies. All sizes and positions are in bytes of plain cells.
///
/// GetInput is a change of the stream like any other: two threads must not call it at once.
///
/// An Append that cannot be stored in the encoding throws QVE_OverflowError, and the stream then holds what it held
/// before. What is read from a stored stream is checked: QVE_RuntimeError with the number of the encoding.
class EncodedDataStream : public DelegatedDataStream {
public:
    /// The name of the encoding in catalogs.
    virtual std::wstring_view GetEncodingName() const = 0;
    /// Bytes to a cell: 1, 2, 4 or 8.
    unsigned GetWidth() const { return m_width; }
    /// Brings the header and what is buffered to the delegate.
    virtual void Flush() = 0;
    /// True when a stream just made would store the same values in the same way.
    virtual bool HasSameLayout(const EncodedDataStream& other) const = 0;

    uint64_t GetSize() const final { return m_length; }
    uint64_t GetCursor() const final { return m_cursor; }
    uint64_t GetLimit() const final { return m_limit; }
    const char* GetInput(uint64_t offset) const final {
        if (offset > m_limit) ThrowGetInput();
        // Nothing that can be seen from outside changes.
        if (m_waiting) const_cast<EncodedDataStream*>(this)->DecodeWaiting();
        return m_input + offset;
    }
    uint64_t Seek(uint64_t position, uint64_t minimum) final;
    /// Never: the buffer is overwritten.
    bool IsResident() const final { return false; }
    uint64_t Load(uint64_t position, uint64_t count) const override;
    uint64_t Purge() final;
    RefCntPtr<DataStream> Fork(bool readOnly) final;
    void Append(DataStream& from) final { AppendWindows(from); }
    void Append(const void* bytes, uint64_t count) final;

    /// Refused: cells are not written in place.
    char* GetOutput(uint64_t offset) final;
    void Extend(uint64_t count) final;
    void Resize(uint64_t size) override;

protected:
    EncodedDataStream(RefCntPtr<DataStream> delegate, const char* typeName);

    struct Decoded {
        uint64_t begin;
        uint64_t size;
    };
    /// What Decode will put into the buffer for these arguments, if that is known beforehand; else of size 0, and Seek
    /// decodes at once.
    virtual Decoded GetWindow(uint64_t, uint64_t) const { return {0, 0}; }
    /// Decodes cells so that [position, position + minimum) is covered; both lie within the stream, minimum above 0.
    /// Returns the first position and the size of what it put into the buffer.
    virtual Decoded Decode(uint64_t position, uint64_t minimum, DecodeBuffer& buffer) = 0;
    /// Stores whole cells behind the present ones.
    virtual void Encode(const char* cells, uint64_t bytes) = 0;
    virtual RefCntPtr<EncodedDataStream> MakeFork(RefCntPtr<DataStream> delegate) const = 0;
    [[noreturn]] virtual void ThrowSeek() const = 0;

    void SetWidth(unsigned width) { m_width = width; }
    void SetLength(uint64_t length) { m_length = length; }
    bool IsDirty() const { return m_dirty; }
    void SetDirty(bool dirty) { m_dirty = dirty; }
    /// Forgets what is decoded. The cursor stays; the window is empty until the next Seek.
    void DropWindow();
    /// Writes over the delegate's bytes from `offset` on, and appends what lies behind their end.
    void WriteStored(uint64_t offset, const void* bytes, uint64_t count);
    /// Reads `count` bytes of the delegate; false when it is shorter.
    bool ReadStored(uint64_t offset, void* bytes, uint64_t count);

private:
    [[noreturn]] static void ThrowGetInput();
    void PointToCursor();
    void DecodeWaiting();

    unsigned m_width = 1;
    uint64_t m_length = 0;
    uint64_t m_cursor = 0;
    uint64_t m_limit = 0;
    const char* m_input;
    bool m_waiting = false;  // the window is set, but not decoded
    uint64_t m_bufferBegin = 0;
    uint64_t m_bufferSize = 0;
    DecodeBuffer m_buffer;
    bool m_dirty = false;
    char m_noBytes = 0;  // what GetInput points to while the window is empty
};

}  // namespace qve
