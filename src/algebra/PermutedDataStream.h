#pragma once

#include <mutex>
#include <optional>

#include "algebra/WholeColumn.h"
#include "primitives/primitive_func.h"
#include "storage/EncodedDataStream.h"
#include "system/RefCntObject.h"

namespace qve {

class Column;
class ProgressCallback;
class TableSorter;

/// The cells of a column in the order that a sort found, fetched as they are read: a column of a sorted table is never
/// written out, and pages that nobody looks at are never put together.
class PermutedDataStream final : public EncodedDataStream {
public:
    /// The sorted column, shared by the forks of a stream.
    class Cells : public RefCntObject {
    public:
        /// The rows of `source`, which nobody else seeks, from `start` on; `sorter` has sorted its table.
        Cells(RefCntPtr<Column> source, uint64_t start, uint64_t rows, RefCntPtr<const TableSorter> sorter,
              RefCntPtr<ProgressCallback> progress);
        ~Cells() override;

        /// Writes the cells of `count` rows from `row` on, in sorted order. Any thread. The first call reads the
        /// source; it throws CancelledException when the sort's operator is cancelled.
        void Fetch(uint64_t row, uint64_t count, void* out);

        unsigned GetWidth() const { return m_width; }
        uint64_t GetCount() const;

    private:
        const RefCntPtr<Column> m_source;
        const uint64_t m_start;
        const uint64_t m_rows;
        const RefCntPtr<const TableSorter> m_sorter;
        const RefCntPtr<ProgressCallback> m_progress;
        const unsigned m_width;
        const binary_func m_fetch;
        std::mutex m_mutex;
        std::optional<WholeColumn> m_cells;
    };

    explicit PermutedDataStream(RefCntPtr<Cells> cells);

    std::wstring_view GetEncodingName() const override { return L"permuted"; }
    uint64_t GetPageLimit() const override { return uint64_t{GetWidth()} << 10; }
    bool CanExtend() const override { return false; }
    bool HasSameLayout(const EncodedDataStream&) const override { return false; }
    void Flush() override {}

protected:
    Decoded GetWindow(uint64_t position, uint64_t minimum) const override;
    Decoded Decode(uint64_t position, uint64_t minimum, DecodeBuffer& buffer) override;
    [[noreturn]] void Encode(const char* cells, uint64_t bytes) override;
    RefCntPtr<EncodedDataStream> MakeFork(RefCntPtr<DataStream> delegate) const override;
    [[noreturn]] void ThrowSeek() const override;

private:
    const RefCntPtr<Cells> m_cells;
};

}  // namespace qve
