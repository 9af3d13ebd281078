#pragma once

#include <cstdint>
#include <string>

#include "algebra/Namespace.h"

namespace qve {

/// A stream of pages, pulled by its consumer. After Next the page has GetExtent() rows, which start at position 0 of
/// each column; GetSelection() says which of them count. A page with an extent above 0 and no selected row is not the
/// end of the flow: only an extent of 0 is.
class DataFlow : public Namespace {
public:
    /// A flow over `source`, which may be null for a leaf, that shows the columns `names`.
    DataFlow(RefCntPtr<DataFlow> source, const ColumnNames& names);
    ~DataFlow() override;

    ColumnNames GetColumnNames() const override;
    bool HasColumn(const std::wstring& name) const override;
    /// Makes the column by LoadColumn when it is first asked for. Raises 40102.
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    unsigned GetColumnCount() const override;
    /// The loaded column, or what LookupColumn says. Raises 40101.
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;

    /// Rows of the page, selected or not.
    virtual unsigned GetExtent() const;
    /// Ascending positions of the selected rows, GetSelectionCount() of them, valid until the next Next; null for all
    /// rows of the page.
    virtual const unsigned* GetSelection() const;
    /// How many rows of the page are selected.
    virtual unsigned GetSelectionCount() const;
    /// Absolute number of the row that the next page begins with. May be asked by any thread.
    virtual uint64_t GetCursor() const;
    /// Rewinds to the first row. Raises 40105 where there is no source.
    virtual void ResetCursor();
    /// The cursor before the last Next.
    virtual uint64_t GetPreviousCursor() const;
    /// Produces the next page of at most `pageSize` rows and returns its extent; 0 at the end, and ever after.
    virtual unsigned Next(unsigned pageSize);
    /// Makes the column of `name`, when it is first asked for. Raises 40103.
    virtual RefCntPtr<Column> LoadColumn(const std::wstring& name) const;
    /// The column of `name` as the source describes it. Raises 40104.
    virtual RefCntPtr<Column> LookupColumn(const std::wstring& name) const;

    /// The flow below, null for a leaf. It never changes, so any thread may ask.
    const RefCntPtr<DataFlow>& GetSource() const { return m_source; }

protected:
    /// A page of `extent` rows without a selection.
    unsigned SetPage(unsigned extent) {
        m_selection = nullptr;
        m_selectionCount = extent;
        return m_extent = extent;
    }

    const RefCntPtr<DataFlow> m_source;
    mutable ColumnMap m_columns;
    mutable ColumnMap m_descriptions;
    unsigned m_extent = 0;
    const unsigned* m_selection = nullptr;
    unsigned m_selectionCount = 0;
};

}  // namespace qve
