#pragma once

#include <vector>

#include "storage/EncodedDataStream.h"

namespace qve {

class usratom;

/// Run lengths, "rle". A header of 10 bytes: 0 length of the plain cells in bytes (8 bytes), 8 width of the run field
/// (1), 9 width of the value (1). Then records back to back: the run's length less one, and its value.
class RunLengthDataStream final : public EncodedDataStream {
public:
    /// A stretch of equal values.
    struct Run {
        uint64_t row;    ///< of its first value
        uint64_t count;  ///< values from there on
        int64_t value;   ///< sign-extended
    };

    /// Reads a stored stream. It can be read only.
    explicit RunLengthDataStream(RefCntPtr<DataStream> stored);
    /// Writes to `target`, which is empty.
    RunLengthDataStream(RefCntPtr<DataStream> target, unsigned runWidth, unsigned width);
    /// A stream of one run: `rows` times the value of `atom`, in as many bytes as the atom has. Written to `target`.
    static RefCntPtr<RunLengthDataStream> CreateConstantStream(RefCntPtr<DataStream> target, const usratom& atom,
                                                               uint64_t rows);

    unsigned GetRunWidth() const { return m_runWidth; }
    /// The stored size that the records so far take.
    uint64_t GetEncodedSize() const;

    /// The runs without their expansion: goes to the run that holds `row` and gives it from there on. ReadNextRun then
    /// gives the following ones; count 0 at the end of the stream. Independent of the window, but they share the
    /// delegate's: a Seek of cells in between costs time and nothing else.
    Run ReadUntil(uint64_t row);
    Run ReadNextRun();

    std::wstring_view GetEncodingName() const override { return L"rle"; }
    uint64_t GetPageLimit() const override { return uint64_t{GetWidth()} << 10; }
    bool CanExtend() const override { return m_writable && EncodedDataStream::CanExtend(); }
    bool HasSameLayout(const EncodedDataStream& other) const override;
    void Flush() override;
    /// Always refused: QVE_RangeError 40388.
    void Resize(uint64_t size) override;

protected:
    Decoded Decode(uint64_t position, uint64_t minimum, DecodeBuffer& buffer) override;
    void Encode(const char* cells, uint64_t bytes) override;
    RefCntPtr<EncodedDataStream> MakeFork(RefCntPtr<DataStream> delegate) const override;
    [[noreturn]] void ThrowSeek() const override;

private:
    RunLengthDataStream(const RunLengthDataStream& other, RefCntPtr<DataStream> delegate);
    uint64_t RecordSize() const { return m_runWidth + GetWidth(); }
    uint64_t MaximalRun() const;
    /// Reads the record at m_next into m_run.
    void ReadRecord();
    /// Drops what is known of the delegate's window: others may have moved it.
    void ForgetRecords() { m_windowBegin = m_windowEnd = 0; }
    /// Writes the values of [row, end) to `out`, which has room for some more. Field is the type of the run field.
    template <class Field, class T>
    void Expand(uint64_t row, uint64_t end, T* out);
    /// Makes m_run the run that holds `row`, which is in the stream.
    void GoTo(uint64_t row);
    void AddRun(int64_t value, uint64_t count);
    void PutRecord(int64_t value, uint64_t count);

    /// A place in the records: the row at which the record at `offset` begins.
    struct Mark {
        uint64_t row;
        uint64_t offset;
    };

    unsigned m_runWidth = 1;

    // For reading.
    Run m_run{0, 0, 0};          // count 0 before the first record
    uint64_t m_next;             // offset of the record behind it
    std::vector<Mark> m_marks;   // ascending; where to start when a row lies behind
    uint64_t m_read = 0;         // where ReadNextRun goes on
    uint64_t m_windowBegin = 0;  // the delegate's window, during one call
    uint64_t m_windowEnd = 0;
    const char* m_window = nullptr;

    // For writing.
    bool m_writable = false;
    int64_t m_lastValue = 0;
    uint64_t m_lastCount = 0;     // of the run that may still grow; 0 in an empty stream
    uint64_t m_recordsEnd;        // offset of its record
    uint64_t m_records = 0;       // finished ones
    std::vector<char> m_pending;  // finished ones that are not stored yet
};

}  // namespace qve
