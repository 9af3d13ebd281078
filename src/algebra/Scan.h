#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "algebra/DataFlow.h"
#include "algebra/Table.h"

namespace qve {

/// Reads a table page by page. A plain column is not copied: the page is the stream's own memory; an encoded one
/// decodes the page. All rows of a page are selected.
class Scan : public DataFlow {
public:
    /// The columns `names` of `table`.
    Scan(RefCntPtr<Table> table, const ColumnNames& names);
    /// All columns of `table`.
    explicit Scan(RefCntPtr<Table> table);
    ~Scan() override;

    void Accept(OperatorVisitor& visitor) override;
    uint64_t GetCursor() const override;
    void ResetCursor() override;
    uint64_t GetPreviousCursor() const override;
    /// Builds the table on the first call. A page may be shorter than asked for where a column's window ends. Raises
    /// 40401 when a column is shorter than its table, and CancelledException after SetCancelled.
    unsigned Next(unsigned pageSize) override;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;

    /// Ends the scan with CancelledException at the end of the Next that runs or comes. Any thread may call it.
    void SetCancelled();

    const RefCntPtr<Table>& GetTable() const { return m_table; }
    /// How many of the columns are stored encoded; known after the first Next.
    unsigned GetEncodedCount() const { return m_encodedCount; }

private:
    struct Seeker;

    void Start(unsigned pageSize);

    const RefCntPtr<Table> m_table;
    // Progress is asked for by other threads.
    std::atomic<uint64_t> m_cursor{0};
    std::atomic<uint64_t> m_previousCursor{0};
    std::atomic<bool> m_cancelled{false};
    bool m_started = false;
    unsigned m_encodedCount = 0;
    std::vector<RefCntPtr<Seeker>> m_seekers;
};

}  // namespace qve
