#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "server/protocol/QVE_Value.h"
#include "storage/Column.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"

namespace qve::Server {

/// The rows of a page that are rendered together.
struct RowBatch {
    unsigned count = 0;                   ///< rows
    const unsigned* selection = nullptr;  ///< their positions in the page; null for consecutive ones
    unsigned first = 0;                   ///< the first position when there is no selection

    unsigned GetPosition(unsigned row) const { return selection ? selection[row] : first + row; }
};

/// Turns one column of a result into wire values, a batch of rows at a time: the work for one value is inlined into a
/// loop over its type. One thread at a time.
class Formatter : public RefCntObject {
public:
    Formatter(std::wstring name, RefCntPtr<Column> column, std::uint32_t datatype)
        : m_name(std::move(name)), m_column(std::move(column)), m_datatype(datatype) {}

    /// Refetches the view of the column: called when the page has changed.
    virtual void RefreshInput() = 0;
    /// Writes the values of the batch to values[0], values[stride], and so on. Their payloads are good until the next
    /// call of this object or the next page.
    virtual void Render(const RowBatch& batch, QVE_Value* values, std::size_t stride) = 0;

    const std::wstring& GetName() const noexcept { return m_name; }
    const Column& GetColumn() const noexcept { return *m_column; }
    std::uint32_t GetDatatype() const noexcept { return m_datatype; }

    /// The formatter of a column's wire type. Throws what GetDatatype throws; QVE_RangeError (40432) for values of a
    /// type that cannot be sent.
    static RefCntPtr<Formatter> Make(const std::wstring& name, RefCntPtr<Column> column);

protected:
    const std::wstring m_name;
    const RefCntPtr<Column> m_column;
    const std::uint32_t m_datatype;
};

/// The formatter of text. Resolves the tokens of a batch through the column's heap.
RefCntPtr<Formatter> MakeVarcharFormatter(const std::wstring& name, RefCntPtr<Column> column, std::uint32_t datatype);

}  // namespace qve::Server
