#pragma once

#include <vector>

#include "primitives/primitive_func.h"
#include "system/RefCntPtr.h"

namespace qve {

class Column;

/// Keeps rows of a flow: appends the cells of a column of its pages, as they are stored, to a column of a table. Tokens
/// stay tokens of the flow's dictionary, which both columns share.
class CellCopier {
public:
    /// `to` has the properties of `from`, in "col" storage, and no streams.
    CellCopier(RefCntPtr<Column> from, RefCntPtr<Column> to);

    /// Makes `to` ready for the cells. Called once, when the flow has its first page or is known to have none: only
    /// then a computed column has its dictionary.
    void Bind();
    /// Appends `count` rows of the page, which need not be in order. Raises QVE_LogicError 40056 when the flow has
    /// taken another dictionary since.
    void Append(unsigned count, const unsigned* rows);

    const RefCntPtr<Column>& GetFrom() const { return m_from; }
    const RefCntPtr<Column>& GetTo() const { return m_to; }

private:
    RefCntPtr<Column> m_from;
    RefCntPtr<Column> m_to;
    binary_func m_copy = nullptr;
    std::vector<unsigned> m_firstRow;  // zeros: the selection of a column with one value for all rows
};

}  // namespace qve
