#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "algebra/ExpGrouping.h"
#include "os/BudgetedMemory.h"

namespace qve {

/// A grouping for a join of two inputs that are both sorted by the key: the distinct inner keys stand in their order,
/// and a cursor in them follows the outer rows. Nothing is hashed. Outer rows that come out of order are found too, if
/// not as fast.
class MergeGrouping : public ExpGrouping {
public:
    /// An expression for the key of the outer rows, and one for that of the inner rows.
    using Condition = std::pair<RefCntPtr<Exp>, RefCntPtr<Exp>>;
    using Conditions = std::vector<Condition>;

    MergeGrouping(CompareSemantics semantics, Conditions conditions);
    ~MergeGrouping() override;

    void Reset(unsigned size) override;
    /// Raises QVE_InvalidArgument 40219 without a condition, and 40220 for more than one.
    RefCntPtr<Context> MakeContext(const Namespace* rows, const Namespace* groups) const override;
    unsigned Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes, const unsigned* sel,
                   Context* context) override;
    /// False when the rows are not in order after all.
    bool HashInner(const RefCntPtr<Table>& inner, const Namespace& keys, const std::vector<std::wstring>& names,
                   unsigned pageSize, const ProgressCallback* progress) override;
    GroupingIdType NameId() const override;

    /// The condition of a join of `probe` and `build` on the columns `pairs`, outer name first; none unless there is
    /// one, of the same type of whole numbers or dates on both sides, by which both are sorted in the same sense.
    static Conditions ResolveMerge(const Namespace& probe, const Namespace& build,
                                   const std::vector<std::pair<std::wstring, std::wstring>>& pairs);
    /// The order of the single columns of a namespace: those that say of themselves that they are ordered.
    static std::vector<Namespace::SortSpec> BuildOrderedSpecs(const Namespace& columns);

private:
    class MergeContext;

    // The distinct inner keys (".KEYS"), ascending as unsigned numbers, and the first row of each.
    budgeted_vector<uint64_t> m_keys;
    budgeted_vector<unsigned> m_rows;
    const Conditions m_conditions;
    bool m_descending = false;
};

}  // namespace qve
