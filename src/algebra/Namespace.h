#pragma once

#include <string>
#include <vector>

#include "algebra/ColumnNames.h"
#include "system/Operator.h"

namespace qve {

class OperatorVisitor;

/// An operator that has named columns: either a Table, which holds all its rows, or a DataFlow, which gives them page
/// by page. Operators own their sources; one thread at a time uses a tree, but for the calls that say otherwise.
class Namespace : public Operator {
public:
    /// One sort key of a namespace that is sorted.
    struct SortSpec {
        std::wstring name;
        bool descending = false;

        friend bool operator==(const SortSpec&, const SortSpec&) = default;
    };

    /// Rows of a page where nobody asks for another size.
    static unsigned s_blockLength;

    /// Calls the visitor's slot of this operator's class.
    virtual void Accept(OperatorVisitor& visitor) = 0;

    /// Does the work of a statement and gives what is to be read afterwards; by default the namespace itself.
    virtual RefCntPtr<Namespace> Execute(unsigned pageSize);

    virtual ColumnNames GetColumnNames() const = 0;
    virtual bool HasColumn(const std::wstring& name) const;

    /// The column with its data. For a flow it is the same object on every page, and its content is replaced by each
    /// Next; for a table it is complete once the table is built. Raises QVE_OutOfRange for an unknown name.
    virtual RefCntPtr<Column> GetColumn(const std::wstring& name) const = 0;
    virtual unsigned GetColumnCount() const = 0;

    /// A column with the type and properties of `name`; it need not hold data, and none is made for it.
    virtual RefCntPtr<Column> DescribeColumn(const std::wstring& name) const = 0;

    /// What the operator may hold in memory, in bytes; all ones while nobody has said.
    virtual unsigned long GetMemoryBudget() const;
    virtual void SetMemoryBudget(unsigned long bytes);

    /// The sort order that the columns of `columns` declare by "sort-position" and "sort-sense", first key first.
    static std::vector<SortSpec> BuildSortSpecs(const Namespace& columns);

private:
    unsigned long m_memoryBudget = ~0UL;
};

}  // namespace qve
