#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "algebra/Namespace.h"
#include "algebra/Table.h"
#include "system/ProgressCallback.h"

namespace qve {

class Column;

/// Sorts a table by a list of keys. The table itself is left alone: the result is a permutation, by which columns are
/// then rewritten one at a time, so that a column nobody reads is never moved.
///
/// Nulls come first in ascending order and last in descending; a NaN that is no null comes after all numbers. Rows with
/// equal keys keep no order that may be relied on.
class TableSorter : public RefCntObject {
public:
    /// Rows of `table`, which is built, by `specs`. `progress` may be null; when it says cancelled, the sort ends with
    /// CancelledException. Raises QVE_InvalidArgument "TableSorter::m_table" for a null table.
    TableSorter(RefCntPtr<Table> table, std::vector<Namespace::SortSpec> specs,
                RefCntPtr<ProgressCallback> progress = {});
    ~TableSorter() override;

    /// The setting "radixsorting": whether keys that are dense and unique are scattered to their places without a sort.
    static void SetUseRadixSorting(bool use) { s_useRadixSorting = use; }
    static bool GetUseRadixSorting() { return s_useRadixSorting; }

    /// The most values of `width` bytes that one stream window holds.
    static uint64_t GetMergeCount(uint64_t width);

    /// Works out the permutation and keeps the first `limit` rows of it. Returns whether anything was to be done; when
    /// not, the rows stand as they should.
    bool Sort(uint64_t limit = ~uint64_t{0});

    /// After Sort: the row of the table that comes at each place; empty when the table's own order is right.
    const std::vector<unsigned>& GetPermutation() const { return m_permutation; }
    /// Rows of the result.
    uint64_t GetCount() const { return m_count; }
    /// After Sort: appends the values of `source`, a column of the table, to `target`, in the sorted order.
    void ReorderColumn(const Column& source, Column& target) const;

    /// Sets "sort-position", "sort-sense" and "ordered" of the column `name` as the specs say, and clears what a change
    /// of order makes untrue.
    static void UpdateSortProperties(Column& column, const std::wstring& name,
                                     const std::vector<Namespace::SortSpec>& specs);

private:
    void CheckCancelled() const;

    static bool s_useRadixSorting;

    const RefCntPtr<Table> m_table;
    const std::vector<Namespace::SortSpec> m_specs;
    const RefCntPtr<ProgressCallback> m_progress;
    std::vector<unsigned> m_permutation;
    uint64_t m_count = 0;
};

}  // namespace qve
