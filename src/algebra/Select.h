#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "algebra/DataFlow.h"
#include "algebra/Exp.h"

namespace qve {

/// Keeps the rows for which a predicate is true. Moves no data: it only narrows the selection, so a page may have an
/// extent above 0 and no selected row, and that is not the end of the flow.
class Select : public DataFlow {
public:
    /// `selectivity` is the expected share of the rows that pass, between 0 and 1; the null of double when it is not
    /// known. Raises 40403 when `predicate` is null.
    Select(RefCntPtr<DataFlow> source, RefCntPtr<Exp> predicate, double selectivity);
    Select(RefCntPtr<DataFlow> source, RefCntPtr<Exp> predicate);
    ~Select() override;

    void Accept(OperatorVisitor& visitor) override;
    /// A predicate that is constant and not true ends the flow at once, without pulling the source.
    unsigned Next(unsigned pageSize) override;
    void ResetCursor() override;
    /// The source's column, without "dense", which a selection breaks.
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    /// The source's description without "dense".
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;

    const RefCntPtr<Exp>& GetPredicate() const { return m_predicate; }
    double GetSelectivity() const { return m_selectivity; }
    /// Rows that passed so far. Any thread may ask.
    uint64_t GetPassed() const { return m_passed.load(std::memory_order_relaxed); }

private:
    struct Undense {
        RefCntPtr<Column> source;
        RefCntPtr<Column> shown;
    };

    void Bind();

    const RefCntPtr<Exp> m_predicate;
    const double m_selectivity;
    RefCntPtr<Column> m_bound;
    bool m_isBound = false;
    unsigned m_constantResult = 1;
    std::vector<unsigned> m_passing;
    mutable std::vector<Undense> m_undense;
    std::atomic<uint64_t> m_passed{0};
};

}  // namespace qve
