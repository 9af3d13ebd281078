#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "algebra/Namespace.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"
#include "types/input_column.h"
#include "types/output_column.h"

namespace qve {

class Column;
class ProgressCallback;
class Table;

/// How the keys of a grouping compare.
enum class CompareSemantics : unsigned {
    nullsDiffer = 0,  ///< a null key matches nothing, not even another null
    nullsMatch = 1,   ///< null keys are equal, and form a group of their own
};

/// The strategies of grouping, for display.
enum class GroupingIdType : unsigned {
    none,
    fetch,
    merge,
    radix,
    array,
    perfectHash,
    perfectConcurrentHash,
    hash,
    concurrentHash,
    sharedJoin,
};

/// Assigns to each row a dense group number, so that equal keys get the same number. Shared by aggregation, whose
/// groups are output rows, and by joins, whose groups are the distinct keys of the inner table. The class itself is the
/// strategy for no keys: one group.
///
/// The owner runs this for each page of `count` rows selected by `sel` (null for all):
///
///     hashes = HashInsert(count, extent, sel, context)
///     misses = Probe(count, missList, groups, hashes, sel, context)
///     while misses > 0, and Accepts(misses, missList, hashes):
///         n = FindInserts(misses, insertList, missList, hashes)
///         give insertList[i] the group size + i in `groups`, and InsertHashes(n, insertList, hashes, size)
///         add these rows as new groups, SetSize(size + n)
///         misses = Probe(misses - n, missList, groups, hashes, missList, context)
///
/// Lists hold row positions of the page, ascending; each needs room for one more than the page. `groups` is unsigned
/// 32-bit and indexed by row position. When Probe sets its flag column_flags::constant, all rows it was asked for are
/// of the group of the first of them, which may be the only one that was written. Rows with equal keys get one group,
/// the first of them in order, and groups are numbered in the order of their first rows; only where keys of one page
/// have the same hash may a later one of them come out of turn.
///
/// A join loads the rows of its inner table by HashInner. There the number of a group is the number of its first row,
/// so that the key of a group stands in the inner table itself, and further rows of the group follow by ".LINKS".
class Grouping : public RefCntObject {
public:
    /// The number of a row that has no group yet.
    static constexpr unsigned noGroup = ~0u;

    /// What a grouping holds for one flow: the grouping itself may be shared between workers, a context never is.
    class Context : public RefCntObject {
    public:
        /// `rows` gives the pages that are grouped. `groups` holds the key columns of the groups, at their group
        /// numbers. Both outlive the context.
        Context(const Namespace* rows, const Namespace* groups) : m_rows(rows), m_groups(groups) {}
        const Namespace* GetRows() const { return m_rows; }
        const Namespace* GetGroups() const { return m_groups; }

    private:
        const Namespace* m_rows;
        const Namespace* m_groups;
    };

    explicit Grouping(CompareSemantics semantics);
    ~Grouping() override;

    /// Makes the bit column ".MATCHED" of the inner rows of an outer join, all false.
    virtual void CreateInnerMatched(unsigned long long rows);
    /// The column ".MATCHED"; null before CreateInnerMatched.
    virtual RefCntPtr<Column> GetInnerMatched();
    /// Marks inner rows as matched: `base` + rows[p] for the first `count` positions p of `selection` (unsigned 32-bit
    /// both; a selection without data means all), where rows[p] is below `limit`.
    virtual void MarkInnerMatched(unsigned long long base, unsigned limit, unsigned count, input_column rows,
                                  input_column selection);
    /// True for the one owner that is to emit the unmatched inner rows.
    virtual bool JoinUnmatched();
    /// The number of groups so far.
    virtual unsigned GetSize() const;
    /// The column ".LINKS": for each inner row the next row of its group, all ones at the end; null where no group has
    /// a second row.
    virtual RefCntPtr<Column> GetLinks();
    /// True when different keys with one hash were met.
    virtual bool HasCollisions() const;
    virtual bool CanHashInnerConcurrently() const;
    /// Forgets all groups. `size` is the expected number of groups of the next use.
    virtual void Reset(unsigned size);
    /// A column "groupids" for the group numbers of a page, unsigned 32-bit, not extended yet; of storage "val" where
    /// one value serves all rows.
    virtual RefCntPtr<Column> AllocateGroupIDs() const;
    virtual RefCntPtr<Context> MakeContext(const Namespace* rows, const Namespace* groups) const;
    /// The hash page of rows that may become groups. Valid until the next page.
    virtual input_column HashInsert(unsigned count, unsigned extent, const unsigned* sel, Context* context) const;
    /// The hash page of rows that are only looked up.
    virtual input_column HashProbe(unsigned count, unsigned extent, const unsigned* sel, Context* context) const;
    /// Writes the group of each row to `groups` and the positions of rows without one to `misses`; returns how many.
    /// `misses` may be the very list that `sel` is.
    virtual unsigned Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes,
                           const unsigned* sel, Context* context);
    /// Splits `count` rows without a group, listed in `retries`, into such as have certainly different keys, to
    /// `inserts`, and the others, which stay in `retries`. Returns the number of the former; at least one of them.
    virtual unsigned FindInserts(unsigned count, unsigned* inserts, unsigned* retries, input_column hashes);
    /// Makes `group` known under `hash`.
    virtual void InsertHash(unsigned hash, unsigned group);
    /// The strategy, for GetName.
    virtual GroupingIdType NameId() const;

    /// Whether the strategy can take these rows, which have no group yet, as new groups. Asked before FindInserts; a
    /// grouping that says no stays as it is, and the owner replaces it.
    virtual bool Accepts(unsigned count, const unsigned* rows, input_column hashes);
    /// InsertHash for `count` rows of a page, which get the groups from `first` on.
    virtual void InsertHashes(unsigned count, const unsigned* rows, input_column hashes, unsigned first);

    /// InsertHash for `count` rows of a page of a join's inner table, each of which is the first of the group numbered
    /// `base` + its position.
    virtual void InsertInner(unsigned count, const unsigned* rows, input_column hashes, unsigned base);
    /// Makes the rows of a join's inner table known by their columns `names`; where nulls differ, those without a null
    /// among them. `keys` holds the whole of these columns by row number, in Column objects of its own. False when the
    /// strategy turns out not to take these keys; then it is of no further use. `progress` may be null; when it says
    /// cancelled, the loading ends with CancelledException. Raises QVE_RangeError 40231 for a table of more than
    /// 4,294,967,293 rows.
    virtual bool HashInner(const RefCntPtr<Table>& inner, const Namespace& keys, const std::vector<std::wstring>& names,
                           unsigned pageSize, const ProgressCallback* progress);
    /// Probe for the outer rows of a join: writes the group of each row to `groups`, noGroup where there is none, and
    /// the positions of rows with a group to `hits`, which has room for one more than `count`; returns how many.
    virtual unsigned ProbeHits(unsigned count, unsigned* hits, output_column groups, input_column hashes,
                               const unsigned* sel, Context* context);

    /// What long steps of the strategy call now and then; it may throw, and then the grouping is of no further use.
    virtual void SetPoll(std::function<void()> poll);

    /// The display name of the strategy.
    const std::wstring& GetName() const { return GetName(NameId()); }
    static const std::wstring& GetName(GroupingIdType strategy);
    void SetSize(unsigned groups) { m_size = groups; }
    CompareSemantics GetSemantics() const { return m_semantics; }

protected:
    /// The context of the pages of a join's inner table.
    virtual RefCntPtr<Context> MakeInnerContext(const Namespace* rows, const Namespace* groups) const;
    /// Builds the inner table of a join and returns its row count. Raises 40231.
    static uint64_t BuildInner(Table& inner, unsigned pageSize);
    /// Makes the column ".LINKS" for `rows` inner rows, all ones.
    void MakeLinkColumn(unsigned long long rows);
    /// Makes `next` the successor of the inner row `row`.
    void SetLink(unsigned long long row, unsigned next);

    RefCntPtr<Column> m_links;
    RefCntPtr<Column> m_innerMatched;

private:
    const CompareSemantics m_semantics;
    unsigned m_size = 0;
    unsigned m_group = noGroup;
};

}  // namespace qve
