#include "algebra/PermutedDataStream.h"

#include <algorithm>
#include <utility>

#include "algebra/TableSorter.h"
#include "algebra/status.h"
#include "primitives/column_kernels.h"
#include "storage/Column.h"
#include "storage/stream/MemoryDataStream.h"
#include "system/QuillonException.h"

namespace qve {

PermutedDataStream::Cells::Cells(RefCntPtr<Column> source, uint64_t start, uint64_t rows,
                                 RefCntPtr<const TableSorter> sorter, RefCntPtr<ProgressCallback> progress)
    : m_source(std::move(source)),
      m_start(start),
      m_rows(rows),
      m_sorter(std::move(sorter)),
      m_progress(std::move(progress)),
      m_width(m_source->GetTokenSize()),
      m_fetch(map_fetch_ulng_col_type_col(m_width)) {}
PermutedDataStream::Cells::~Cells() = default;

uint64_t PermutedDataStream::Cells::GetCount() const {
    return m_sorter->GetCount();
}

void PermutedDataStream::Cells::Fetch(uint64_t row, uint64_t count, void* out) {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_cells) m_cells.emplace(*m_source, m_start, m_rows, m_progress.get());
    }
    constexpr uint64_t mostRows = 1u << 16;
    for (uint64_t done = 0; done < count;) {
        const auto rows = static_cast<unsigned>(std::min(mostRows, count - done));
        unsigned char flags = 0;
        const output_column target{static_cast<char*>(out) + done * m_width, nullptr, m_width, rows, &flags};
        const unsigned* const places = m_sorter->GetPermutation().data() + row + done;
        m_fetch(rows, target, input_column{places, nullptr, sizeof(unsigned), rows, column_flags::not_null},
                m_cells->GetInput(), nullptr);
        done += rows;
    }
}

PermutedDataStream::PermutedDataStream(RefCntPtr<Cells> cells)
    : EncodedDataStream(MakeRef<MemoryDataStream>(), "PermutedDataStream"), m_cells(std::move(cells)) {
    SetWidth(m_cells->GetWidth());
    SetLength(m_cells->GetCount() * m_cells->GetWidth());
}

EncodedDataStream::Decoded PermutedDataStream::GetWindow(uint64_t position, uint64_t minimum) const {
    const uint64_t begin = position / GetWidth() * GetWidth();
    const uint64_t size = std::max(position - begin + minimum, GetPageLimit());
    return {begin, std::min((size + GetWidth() - 1) / GetWidth() * GetWidth(), GetSize() - begin)};
}

EncodedDataStream::Decoded PermutedDataStream::Decode(uint64_t position, uint64_t minimum, DecodeBuffer& buffer) {
    const Decoded window = GetWindow(position, minimum);
    buffer.Reserve(window.size);
    m_cells->Fetch(window.begin / GetWidth(), window.size / GetWidth(), buffer.data());
    return window;
}

void PermutedDataStream::Encode(const char*, uint64_t) {
    throw QVE_LogicError(status::PermutedDataStream_Append, "PermutedDataStream::Append");
}

RefCntPtr<EncodedDataStream> PermutedDataStream::MakeFork(RefCntPtr<DataStream>) const {
    return MakeRef<PermutedDataStream>(m_cells);
}

void PermutedDataStream::ThrowSeek() const {
    throw QVE_OutOfRange(status::PermutedDataStream_Seek, "PermutedDataStream::Seek");
}

}  // namespace qve
