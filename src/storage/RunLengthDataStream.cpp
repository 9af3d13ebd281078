#include "storage/RunLengthDataStream.h"

#include <algorithm>

#include "storage/integer_width.h"
#include "storage/status.h"
#include "system/QuillonException.h"
#include "types/usratom.h"

namespace qve {

namespace {

constexpr const char* typeName = "RunLengthDataStream";
constexpr uint64_t headerSize = 10;
constexpr uint64_t rowsPerMark = 1 << 16;
constexpr size_t pendingLimit = 1 << 16;

// Short runs are the rule: they are written in one go of a fixed length, over what the next run will write.
constexpr uint64_t shortRun = 16;

// `out` has room for `shortRun` values more.
template <class T>
void fill(T* out, uint64_t count, T value) {
    for (uint64_t i = 0; i < shortRun; ++i) out[i] = value;
    for (uint64_t i = shortRun; i < count; ++i) out[i] = value;
}

// The end of the run of equal cells that begins at `begin`.
template <class T>
uint64_t run_end(const char* cells, uint64_t begin, uint64_t count, T value) {
    uint64_t end = begin + 1;
    for (; end < count; ++end) {
        T cell;
        std::memcpy(&cell, cells + end * sizeof(T), sizeof(T));
        if (cell != value) break;
    }
    return end;
}

// A run field: the length less one.
uint64_t decode_run(const char* record, unsigned width) {
    uint64_t field = 0;
    std::memcpy(&field, record, width);
    return field;
}

}  // namespace

RunLengthDataStream::RunLengthDataStream(RefCntPtr<DataStream> stored)
    : EncodedDataStream(std::move(stored), typeName), m_next(headerSize), m_recordsEnd(headerSize) {
    char header[headerSize];
    const bool valid = ReadStored(0, header, sizeof(header)) && is_integer_width(static_cast<uint8_t>(header[8])) &&
                       is_integer_width(static_cast<uint8_t>(header[9]));
    if (!valid)
        throw QVE_RuntimeError(status::RunLengthDataStream_Header, "RunLengthDataStream::Initialise: bad header");
    m_runWidth = static_cast<uint8_t>(header[8]);
    SetWidth(static_cast<uint8_t>(header[9]));
    uint64_t length;
    std::memcpy(&length, header, sizeof(length));
    if (length % GetWidth() != 0)
        throw QVE_RuntimeError(status::RunLengthDataStream_Header, "RunLengthDataStream::Initialise: bad header");
    SetLength(length);
}

RunLengthDataStream::RunLengthDataStream(RefCntPtr<DataStream> target, unsigned runWidth, unsigned width)
    : EncodedDataStream(std::move(target), typeName),
      m_runWidth(runWidth),
      m_next(headerSize),
      m_writable(true),
      m_recordsEnd(headerSize) {
    if (!is_integer_width(runWidth) || !is_integer_width(width))
        throw QVE_DomainError(status::RunLengthDataStream_Header, "RunLengthDataStream::Initialise: bad width");
    SetWidth(width);
    const char header[headerSize] = {};
    GetDelegate()->Append(header, sizeof(header));
    SetDirty(true);
}

RunLengthDataStream::RunLengthDataStream(const RunLengthDataStream& other, RefCntPtr<DataStream> delegate)
    : EncodedDataStream(std::move(delegate), typeName),
      m_runWidth(other.m_runWidth),
      m_next(headerSize),
      m_marks(other.m_marks),
      m_recordsEnd(headerSize) {}

RefCntPtr<RunLengthDataStream> RunLengthDataStream::CreateConstantStream(RefCntPtr<DataStream> target,
                                                                         const usratom& atom, uint64_t rows) {
    const unsigned width = static_cast<unsigned>(atom.length());
    auto stream = MakeRef<RunLengthDataStream>(std::move(target), 8, width);
    if (rows != 0) {
        stream->AddRun(load_integer(atom.data(), width), rows);
        stream->SetLength(rows * width);
    }
    stream->Flush();
    return stream;
}

uint64_t RunLengthDataStream::GetEncodedSize() const {
    return headerSize + (m_records + (m_lastCount != 0)) * RecordSize();
}

uint64_t RunLengthDataStream::MaximalRun() const {
    return m_runWidth == 8 ? ~uint64_t{0} : uint64_t{1} << (8 * m_runWidth);
}

void RunLengthDataStream::ReadRecord() {
    if (m_next < m_windowBegin || m_next + RecordSize() > m_windowEnd) {
        DataStream& stored = *GetDelegate();
        const uint64_t size = stored.GetSize();
        if (size < m_next || size - m_next < RecordSize())
            throw QVE_RuntimeError(status::RunLengthDataStream_Truncated,
                                   "RunLengthDataStream::Seek: runs are missing");
        m_windowBegin = m_next;
        m_windowEnd = m_next + stored.Seek(m_next, RecordSize());
        m_window = stored.GetInput(0);
    }
    const char* record = m_window + (m_next - m_windowBegin);
    const uint64_t row = m_run.row + m_run.count;
    const uint64_t rest = GetSize() / GetWidth() - row;
    // The field is the length less one; more than the stream has counts as its rest, so that nothing overflows.
    const uint64_t field = decode_run(record, m_runWidth);
    m_run = {row, field < rest ? field + 1 : rest, load_integer(record + m_runWidth, GetWidth())};
    if (m_marks.empty() || row >= m_marks.back().row + rowsPerMark) m_marks.push_back({row, m_next});
    m_next += RecordSize();
}

void RunLengthDataStream::GoTo(uint64_t row) {
    if (IsDirty()) Flush();
    // Back to the last mark at or before the row; forward as well, where one lies beyond the present run.
    if (row < m_run.row || row >= m_run.row + m_run.count) {
        const auto mark =
            std::upper_bound(m_marks.begin(), m_marks.end(), row, [](uint64_t r, const Mark& m) { return r < m.row; });
        const Mark start = mark == m_marks.begin() ? Mark{0, headerSize} : *(mark - 1);
        if (row < m_run.row || start.row > m_run.row + m_run.count) {
            m_run = {start.row, 0, 0};
            m_next = start.offset;
        }
    }
    while (row >= m_run.row + m_run.count) ReadRecord();
}

RunLengthDataStream::Run RunLengthDataStream::ReadUntil(uint64_t row) {
    if (row >= GetSize() / GetWidth()) {
        if (row > GetSize() / GetWidth()) ThrowSeek();
        m_read = row;
        return {row, 0, 0};
    }
    ForgetRecords();
    GoTo(row);
    const uint64_t end = m_run.row + m_run.count;
    m_read = end;
    return {row, end - row, m_run.value};
}

RunLengthDataStream::Run RunLengthDataStream::ReadNextRun() {
    return ReadUntil(m_read);
}

template <class Field, class T>
void RunLengthDataStream::Expand(uint64_t row, uint64_t end, T* out) {
    constexpr uint64_t recordSize = sizeof(Field) + sizeof(T);
    const uint64_t rows = GetSize() / sizeof(T);
    GoTo(row);
    for (;;) {
        const uint64_t count = std::min(m_run.row + m_run.count, end) - row;
        fill(out, count, static_cast<T>(m_run.value));
        out += count;
        row += count;
        if (row == end) return;
        // What ReadRecord does, for a record that lies in the window and needs no mark, as nearly all do.
        if (m_next + recordSize > m_windowEnd || row >= m_marks.back().row + rowsPerMark) {
            ReadRecord();
            continue;
        }
        const char* record = m_window + (m_next - m_windowBegin);
        Field field;
        T value;
        std::memcpy(&field, record, sizeof(field));
        std::memcpy(&value, record + sizeof(field), sizeof(value));
        m_run = {row, std::min<uint64_t>(field, rows - row - 1) + 1, value};
        m_next += recordSize;
    }
}

EncodedDataStream::Decoded RunLengthDataStream::Decode(uint64_t position, uint64_t minimum, DecodeBuffer& buffer) {
    const uint64_t width = GetWidth();
    const uint64_t begin = position / width;
    const uint64_t wanted = std::max(position - begin * width + minimum, GetPageLimit());
    const uint64_t end = begin + (std::min(wanted, GetSize() - begin * width) + width - 1) / width;
    buffer.Reserve((end - begin + shortRun) * width);
    ForgetRecords();
    with_width(GetWidth(), [&](auto value) {
        with_width(m_runWidth, [&](auto field) {
            using Field = std::make_unsigned_t<decltype(field)>;
            Expand<Field>(begin, end, reinterpret_cast<decltype(value)*>(buffer.data()));
        });
    });
    return {begin * width, (end - begin) * width};
}

void RunLengthDataStream::Encode(const char* cells, uint64_t bytes) {
    if (!m_writable) throw QVE_InvalidArgument(status::RunLengthDataStream_Append, "RunLengthDataStream::Append");
    with_width(GetWidth(), [&](auto zero) {
        using T = decltype(zero);
        const uint64_t count = bytes / sizeof(T);
        for (uint64_t begin = 0; begin < count;) {
            T value;
            std::memcpy(&value, cells + begin * sizeof(T), sizeof(T));
            const uint64_t end = run_end(cells, begin, count, value);
            AddRun(value, end - begin);
            begin = end;
        }
    });
}

void RunLengthDataStream::AddRun(int64_t value, uint64_t count) {
    if (m_lastCount != 0 && value != m_lastValue) {
        PutRecord(m_lastValue, m_lastCount);
        m_lastCount = 0;
    }
    m_lastValue = value;
    while (count > MaximalRun() - m_lastCount) {
        count -= MaximalRun() - m_lastCount;
        PutRecord(value, MaximalRun());
        m_lastCount = 0;
    }
    m_lastCount += count;
}

void RunLengthDataStream::PutRecord(int64_t value, uint64_t count) {
    const uint64_t field = count - 1;
    char record[16];
    std::memcpy(record, &field, m_runWidth);
    store_integer(record + m_runWidth, GetWidth(), value);
    m_pending.insert(m_pending.end(), record, record + RecordSize());
    ++m_records;
    if (m_pending.size() >= pendingLimit) {
        WriteStored(m_recordsEnd, m_pending.data(), m_pending.size());
        m_recordsEnd += m_pending.size();
        m_pending.clear();
    }
}

void RunLengthDataStream::Flush() {
    if (!IsDirty()) return;
    // The last run goes behind the finished ones, where the next finished one will be written over it.
    if (m_lastCount != 0) {
        PutRecord(m_lastValue, m_lastCount);
        --m_records;
    }
    const uint64_t open = m_lastCount != 0 ? RecordSize() : 0;
    WriteStored(m_recordsEnd, m_pending.data(), m_pending.size());
    m_recordsEnd += m_pending.size() - std::min<uint64_t>(m_pending.size(), open);
    if (m_pending.empty()) m_recordsEnd -= open;
    m_pending.clear();

    char header[headerSize];
    const uint64_t length = GetSize();
    std::memcpy(header, &length, sizeof(length));
    header[8] = static_cast<char>(m_runWidth);
    header[9] = static_cast<char>(GetWidth());
    WriteStored(0, header, sizeof(header));

    // A run read before may have grown.
    m_run = {0, 0, 0};
    m_next = headerSize;
    ForgetRecords();
    SetDirty(false);
}

void RunLengthDataStream::Resize(uint64_t) {
    throw QVE_RangeError(status::RunLengthDataStream_Resize, "RunLengthDataStream::Resize");
}

bool RunLengthDataStream::HasSameLayout(const EncodedDataStream& other) const {
    const auto* same = dynamic_cast<const RunLengthDataStream*>(&other);
    return same && same->m_runWidth == m_runWidth && same->GetWidth() == GetWidth();
}

RefCntPtr<EncodedDataStream> RunLengthDataStream::MakeFork(RefCntPtr<DataStream> delegate) const {
    return RefCntPtr<EncodedDataStream>(new RunLengthDataStream(*this, std::move(delegate)));
}

void RunLengthDataStream::ThrowSeek() const {
    throw QVE_OutOfRange(status::RunLengthDataStream_Seek, "RunLengthDataStream::Seek");
}

}  // namespace qve
