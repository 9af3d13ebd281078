#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "algebra/Namespace.h"
#include "algebra/Table.h"
#include "os/BudgetedMemory.h"
#include "system/ProgressCallback.h"

namespace qve {

class Column;
class SortKeys;

/// Sorts a table by a list of keys. The table itself is left alone: the result is a permutation, by which columns are
/// then rewritten one at a time, so that a column nobody reads is never moved.
///
/// Nulls come first in ascending order and last in descending; a NaN that is no null comes after all numbers. Rows with
/// equal keys keep no order that may be relied on.
class TableSorter : public RefCntObject {
public:
    /// Rows of `table`, which is built, by `specs`. `progress` may be null; when it says cancelled, the sort ends with
    /// CancelledException. Raises QVE_InvalidArgument 40556 for a null table.
    TableSorter(RefCntPtr<Table> table, std::vector<Namespace::SortSpec> specs,
                RefCntPtr<ProgressCallback> progress = {});
    ~TableSorter() override;

    /// The setting "radixsorting": whether a key that is dense and unique puts its rows to their places without a sort.
    static void SetUseRadixSorting(bool use) { s_useRadixSorting = use; }
    static bool GetUseRadixSorting() { return s_useRadixSorting; }

    /// The most values of `width` bytes that one stream window holds.
    static uint64_t GetMergeCount(uint64_t width);

    /// Works out the order and keeps the first `limit` rows of it. Returns whether the rows are to be moved; when not,
    /// they stand as they should. Raises QVE_RangeError 40557 for a table of more than 4,294,967,295 rows or with a
    /// column that has less rows than the table, and QVE_InvalidArgument 40558 for a type without an order.
    bool Sort(uint64_t limit = ~uint64_t{0});

    /// After Sort: the row of the table that comes at each place; empty when the rows are not to be moved.
    const dense_vector<unsigned>& GetPermutation() const { return m_permutation; }
    /// After Sort: the number of rows that are kept.
    uint64_t GetCount() const { return m_count; }
    /// After Sort: fills `target`, which has the properties of a column of the table and no streams, with the values of
    /// `source`, that column, in the new order. A dictionary is shared.
    void ReorderColumn(Column& source, Column& target) const;

    /// Makes "sort-position", "sort-sense" and "ordered" of a column say that its table is sorted by `specs`.
    static void UpdateSortProperties(Column& column, const std::vector<Namespace::SortSpec>& specs);

private:
    bool IsSorted() const;
    std::vector<Namespace::SortSpec> GetDecidingSpecs() const;
    bool IsRadixSortable() const;
    bool RadixSort();
    void SortWide(SortKeys& keys);
    void ReleaseItems();
    void SortRows(SortKeys& keys, uint64_t first, uint64_t last, unsigned chunk);
    void SortRuns(SortKeys& keys, uint64_t first, uint64_t last, unsigned chunk);
    void SortFew(SortKeys& keys, uint64_t first, uint64_t last);
    void CopyColumn(Column& source, Column& target) const;
    void CheckCancelled() const;

    static bool s_useRadixSorting;

    const RefCntPtr<Table> m_table;
    const std::vector<Namespace::SortSpec> m_specs;
    const RefCntPtr<ProgressCallback> m_progress;
    dense_vector<unsigned> m_permutation;
    dense_vector<uint64_t> m_items;
    dense_vector<uint64_t> m_scratch;
    uint64_t m_count = 0;
};

}  // namespace qve
