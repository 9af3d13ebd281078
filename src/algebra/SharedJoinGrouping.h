#pragma once

#include <memory>
#include <mutex>

#include "algebra/Grouping.h"

namespace qve {

class Join;

/// The grouping of several joins that run in threads of their own over one inner table: the first of them to get there
/// builds and loads the table, while the others wait, and all look their rows up in what it made. Each join has an
/// object of its own, made from that of another one; what they share lives as long as the last of them.
class SharedJoinGrouping : public Grouping {
public:
    /// For the first join, which may be the only one. A join holds its grouping, so the join is not held here; it is
    /// to be the one on which the object is set.
    SharedJoinGrouping(Join* join, CompareSemantics semantics);
    /// For a further join, over the inner table of that of `other`.
    SharedJoinGrouping(Join* join, SharedJoinGrouping& other, CompareSemantics semantics);
    ~SharedJoinGrouping() override;

    /// The number of joins that will run, 1 by default: the last of them to end gives the inner rows that none has
    /// matched. Set before they run.
    void SetWorkerCount(unsigned count);
    /// Whether there is more than one join, so that what they read needs columns of each one's own.
    bool IsShared() const;
    /// Held by a join while it gets ready: building the inner table, and the views of its columns.
    std::unique_lock<std::mutex> LockInner();
    /// Builds and loads the inner table `inner` unless another join has done so, by a strategy of the join's choice
    /// that suits its memory budget. Called under LockInner. What the first join raises, the next one meets anew.
    void BudgetInner(const RefCntPtr<Table>& inner, unsigned pageSize);

    /// Makes the column once for all joins.
    void CreateInnerMatched(unsigned long long rows) override;
    RefCntPtr<Column> GetInnerMatched() override;
    void MarkInnerMatched(unsigned long long base, unsigned limit, unsigned count, input_column rows,
                          input_column selection) override;
    /// True for the last of the joins that ask, each of which asks once.
    bool JoinUnmatched() override;
    unsigned GetSize() const override;
    RefCntPtr<Column> GetLinks() override;
    bool HasCollisions() const override;
    bool CanHashInnerConcurrently() const override;
    RefCntPtr<Context> MakeContext(const Namespace* rows, const Namespace* groups) const override;
    input_column HashProbe(unsigned count, unsigned extent, const unsigned* sel, Context* context) const override;
    unsigned Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes, const unsigned* sel,
                   Context* context) override;
    unsigned ProbeHits(unsigned count, unsigned* hits, output_column groups, input_column hashes, const unsigned* sel,
                       Context* context) override;
    /// The strategy behind; sharedJoin before there is one.
    GroupingIdType NameId() const override;

    /// The key columns of the inner rows, for the contexts; columns of this join's own. Null before BudgetInner.
    const RefCntPtr<Table>& GetKeyCells() const { return m_keyCells; }

private:
    struct Inner;

    Join* const m_join;
    const std::shared_ptr<Inner> m_inner;
    // The grouping behind where this join loaded it, else one of the same strategy that holds nothing: its expressions
    // are of this join's rows.
    RefCntPtr<Grouping> m_own;
    RefCntPtr<Table> m_keyCells;
};

}  // namespace qve
