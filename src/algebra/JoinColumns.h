#pragma once

#include <memory>
#include <string>
#include <vector>

#include "algebra/WholeColumn.h"
#include "primitives/primitive_func.h"
#include "system/RefCntPtr.h"
#include "types/usrprops.h"

namespace qve {

class Column;
class DataFlow;
class ProgressCallback;
class Table;

/// The columns that a join shows: those of the outer flow, which are its pages as they are, or rows picked from them,
/// or nulls; and those imported from the inner table, which are rows picked from there.
class JoinColumns {
public:
    /// `keepsInner`: there may be rows without an outer side. `keepsOuter`: there may be rows without an inner side.
    JoinColumns(bool keepsInner, bool keepsOuter);
    ~JoinColumns();

    /// What is known of the rows of a column that comes through the join.
    usrprops DescribeOuter(const Column& source) const;
    usrprops DescribeInner(const Column& inner, const std::wstring& name) const;

    /// The column to show for a column of the outer flow, under another name if there is one.
    RefCntPtr<Column> AddOuter(RefCntPtr<Column> source, const std::wstring* name = nullptr);
    /// The column to show for a column of the inner table.
    RefCntPtr<Column> AddInner(RefCntPtr<Column> inner, const std::wstring& name);

    /// Takes the cells of the inner columns, of `count` rows from `start` on, once the table is built. With `forked`,
    /// others may read the columns at the same time.
    void BindInner(uint64_t start, uint64_t count, const ProgressCallback* progress, bool forked);

    /// Shows the page of the outer flow itself.
    void PassOuter();
    /// Shows the rows `rows` of the page of the outer flow at the positions 0 to `count` - 1; those of a page that was
    /// passed before.
    void PickOuter(unsigned count, const unsigned* rows);
    /// Shows `count` rows of nulls.
    void ClearOuter(unsigned count);
    /// Shows at the positions that `sel` lists, or at the first `count` ones, the inner rows `rows`, unsigned 32-bit by
    /// position; null where such a number is not below the count of rows.
    void PickInner(unsigned count, unsigned extent, const unsigned* rows, const unsigned* sel);

private:
    struct Outer {
        RefCntPtr<Column> source;
        RefCntPtr<Column> shown;
        RefCntPtr<Column> picked;  // a page of copied cells; made when first needed
        binary_func fetch = nullptr;
    };
    struct Inner {
        RefCntPtr<Column> source;
        RefCntPtr<Column> shown;
        std::unique_ptr<WholeColumn> cells;
        binary_func fetch = nullptr;
    };
    static Column& PickedPage(Outer& column);
    static void Pass(Outer& column);
    static void Pick(Outer& column, unsigned count, const unsigned* rows, input_column from);

    const bool m_outerNulls;
    const bool m_innerNulls;
    std::vector<Outer> m_outer;
    std::vector<Inner> m_inner;
    std::vector<unsigned> m_noRows;  // numbers of no row
};

}  // namespace qve
