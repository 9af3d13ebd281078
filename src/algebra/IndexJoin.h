#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "algebra/DataFlow.h"
#include "algebra/Join.h"
#include "algebra/JoinColumns.h"
#include "algebra/Table.h"

namespace qve {

/// The rows of a table in the ranges that a flow names, each by its first row and the number of its rows. The table is
/// read in place; ranges that follow each other share pages.
class IndexJoin : public DataFlow {
public:
    /// `start` and `count` are columns of `ranges`, of whole numbers; a null or a range without rows gives nothing.
    /// `imports` are pairs of a column of `ranges` and its name in the output, where it takes the place of a column of
    /// the table of that name.
    IndexJoin(RefCntPtr<Table> table, RefCntPtr<DataFlow> ranges, Join::NamePairs imports, std::wstring start,
              std::wstring count);
    ~IndexJoin() override;

    void Accept(OperatorVisitor& visitor) override;
    /// Rows of the table that were read, and before the last page.
    uint64_t GetCursor() const override;
    uint64_t GetPreviousCursor() const override;
    void ResetCursor() override;
    /// Builds the table on the first call. Raises QVE_RangeError 40215 for a range beyond the table's rows.
    unsigned Next(unsigned pageSize) override;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;

    const RefCntPtr<Table>& GetTable() const { return m_table; }
    const Join::NamePairs& GetImports() const { return m_imports; }
    const std::wstring& GetStartName() const { return m_start; }
    const std::wstring& GetCountName() const { return m_count; }

private:
    bool NextIndex(unsigned pageSize);
    bool NextRange();

    const RefCntPtr<Table> m_table;
    const Join::NamePairs m_imports;
    const std::wstring m_start;
    const std::wstring m_count;
    mutable JoinColumns m_shown{false, false};  // the imports; the columns of the table are shown as they are
    mutable std::vector<RefCntPtr<Column>> m_tableColumns;
    RefCntPtr<Column> m_starts;
    RefCntPtr<Column> m_counts;
    bool m_bound = false;

    // Of the page of ranges: the place of the next one among the selected, and what is left of the present one.
    unsigned m_place = 0;
    unsigned m_places = 0;
    unsigned m_rangeRow = 0;
    uint64_t m_row = 0;
    uint64_t m_left = 0;
    std::vector<unsigned> m_rangeRows;  // by row of the page
    std::atomic<uint64_t> m_cursor{0};
    uint64_t m_previousCursor = 0;
};

}  // namespace qve
