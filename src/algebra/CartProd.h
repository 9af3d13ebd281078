#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "algebra/DataFlow.h"
#include "algebra/Join.h"
#include "algebra/JoinColumns.h"
#include "algebra/Table.h"
#include "system/ProgressCallback.h"

namespace qve {

/// Pairs each row of a flow with all rows of a table. Pages are full while there are pairs, and all their rows are
/// selected; beside a table of one row the outer pages pass untouched.
class CartProd : public DataFlow {
public:
    /// `imports` are pairs of an inner column and its name in the output, where it takes the place of an outer column
    /// of that name.
    CartProd(RefCntPtr<DataFlow> outer, RefCntPtr<Table> inner, Join::NamePairs imports);
    ~CartProd() override;

    void Accept(OperatorVisitor& visitor) override;
    void ResetCursor() override;
    /// Builds the inner table on the first call. Raises CancelledException.
    unsigned Next(unsigned pageSize) override;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;

    const RefCntPtr<Table>& GetInner() const { return m_inner; }
    const Join::NamePairs& GetImports() const { return m_imports; }
    /// Where a cancel is posted. Any thread.
    const RefCntPtr<ProgressCallback>& GetProgressCallback() const { return m_progress; }

private:
    void Bind(unsigned pageSize);
    bool NextOuter(unsigned pageSize);
    unsigned NextPairs(unsigned pageSize);
    unsigned NextSingle(unsigned pageSize);

    const RefCntPtr<Table> m_inner;
    const Join::NamePairs m_imports;
    const RefCntPtr<ProgressCallback> m_progress;
    mutable JoinColumns m_shown{false, false};
    uint64_t m_innerCount = 0;
    bool m_bound = false;

    // The outer row whose pairs come next, as a place among the selected rows of the page, and its next inner row.
    unsigned m_outerPlace = 0;
    unsigned m_outerCount = 0;
    uint64_t m_innerRow = 0;
    // The rows of a page.
    std::vector<unsigned> m_outerRows;
    std::vector<unsigned> m_innerRows;
};

}  // namespace qve
