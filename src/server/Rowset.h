#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "algebra/DataFlow.h"
#include "os/MappedFile.h"
#include "server/Formatter.h"
#include "server/protocol/QVE_InterredValue.h"
#include "server/protocol/QVE_Value.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"

namespace qve {
class QVE_ValueArray;
}

namespace qve::Server {

/// The cursor of a result: drives a plan page by page and renders its rows for the wire. One thread at a time.
class Rowset : public RefCntObject {
public:
    /// A reply that has grown to this many bytes takes no further row.
    static constexpr std::size_t s_replySize = 0x800000;

    /// Opens the plan and pulls the first page of at most `pageSize` rows; an exception of the plan passes through.
    /// `keepAlive` is what the plan refers to without owning it.
    Rowset(RefCntPtr<DataFlow> plan, unsigned pageSize, std::shared_ptr<const void> keepAlive);
    ~Rowset() override;

    unsigned GetColumnCount() const { return static_cast<unsigned>(m_formatters.size()); }
    /// Throws QVE_RangeError (40695, "bad column number"), like GetColumnProperties.
    const std::wstring& GetColumnName(unsigned column) const;
    /// The properties of the rowset as a whole.
    QVE_PropertyList GetProperties() const;
    /// "name", "type", and the exported properties of the column in the order of their names.
    QVE_PropertyList GetColumnProperties(unsigned column) const;
    bool HasMoreValues() const { return m_row < m_selectionCount; }
    /// Appends rows to an array that is open for write, until it has s_replySize bytes or there are no more. Gives
    /// whether there are more.
    bool GetValues(QVE_ValueArray& array);

private:
    bool NextPage();
    void RenderBatch();
    const Formatter& GetFormatter(unsigned column) const;

    const std::uint64_t m_cuts = MappedFile::GetCutCount();  // before anything was read
    const std::shared_ptr<const void> m_keepAlive;
    const RefCntPtr<DataFlow> m_plan;
    const unsigned m_pageSize;
    std::vector<RefCntPtr<Formatter>> m_formatters;  // in column order

    // The page, and the next of its rows.
    const unsigned* m_selection = nullptr;
    unsigned m_selectionCount = 0;
    unsigned m_row = 0;

    // Rows of the page that are rendered: their values, row by row.
    std::vector<QVE_Value> m_values;
    unsigned m_batchStart = 0;
    unsigned m_batchEnd = 0;
};

}  // namespace qve::Server
