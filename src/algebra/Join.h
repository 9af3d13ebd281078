#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "algebra/DataFlow.h"
#include "algebra/Exp.h"
#include "algebra/Grouping.h"
#include "algebra/JoinColumns.h"
#include "algebra/Table.h"
#include "system/ProgressCallback.h"

namespace qve {

class SharedJoinGrouping;

/// Pairs the rows of a flow with those of a table that have equal keys. The inner table is built and loaded into a
/// grouping with the first page; then each outer page passes through untouched, narrowed to the rows that have a match,
/// with the first match of each row imported beside it. The further matches of a page follow in pages of their own,
/// for which the outer columns are copied.
class Join : public DataFlow {
public:
    enum JoinType : unsigned { InnerJoin, LeftJoin, RightJoin, FullJoin };
    /// A column of one input and a column of the other.
    using NamePairs = std::vector<std::pair<std::wstring, std::wstring>>;

    /// "InnerJoin", "LeftJoin", "RightJoin", "FullJoin", and "UnknownJoin" for anything else.
    static std::wstring JoinTypeToStr(JoinType type);

    /// Rows of the pages in which an inner table is built, at least: what each page costs counts for less then.
    static constexpr unsigned buildRows = 8192;
    /// The columns of a flow and of what is imported beside it.
    static ColumnNames OutputNames(const Namespace& outer, const NamePairs& imports);
    /// The inner column that is imported as `name`; null when there is none.
    static const std::wstring* InnerName(const NamePairs& imports, const std::wstring& name);

    /// `keys` are pairs of an outer and an inner column that must be equal; without any, all rows match. `imports` are
    /// pairs of an inner column and its name in the output, where it takes the place of an outer column of that name.
    /// `nullsMatch` says whether two null keys are equal. A left and a full join keep outer rows without a match, with
    /// null imports; a right and a full join give inner rows without a match at the end, with null outer columns.
    Join(RefCntPtr<DataFlow> outer, RefCntPtr<Table> inner, NamePairs keys, NamePairs imports, JoinType type,
         bool nullsMatch);
    ~Join() override;

    void Accept(OperatorVisitor& visitor) override;
    void ResetCursor() override;
    /// A page without a selected row does not end the flow. Raises CancelledException, what the building of the inner
    /// table raises, 40225 to 40228 for keys that cannot be compared, and 40231 for more inner rows than can be
    /// numbered.
    unsigned Next(unsigned pageSize) override;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;

    /// Installs a grouping before the first page, in place of one of the join's own choice, or drops it when null.
    /// A SharedJoinGrouping makes it one of several joins that share what they build. Raises QVE_InvalidArgument 40229
    /// for a grouping by which nulls compare in another way.
    void SetGrouping(RefCntPtr<Grouping> grouping);
    const RefCntPtr<Grouping>& GetGrouping() const { return m_grouping; }

    /// A grouping that holds the inner rows, and the inner key columns that go with it.
    struct LoadedGrouping {
        RefCntPtr<Grouping> grouping;
        RefCntPtr<Table> keys;
    };
    /// Loads the inner rows by the first strategy that takes them. Raises 40228. For SharedJoinGrouping, when the inner
    /// table is built.
    LoadedGrouping LoadGrouping(unsigned pageSize) const;
    /// A grouping of the strategy, not loaded, with room for `size` groups at first; null when its rules do not allow
    /// it for these keys.
    RefCntPtr<Grouping> MakeGrouping(GroupingIdType strategy, unsigned size) const;
    /// Whether the strategy compares rows with the cells of the inner keys.
    static bool ComparesCells(GroupingIdType strategy);

    const RefCntPtr<Table>& GetInner() const { return m_inner; }
    const NamePairs& GetKeys() const { return m_keys; }
    const NamePairs& GetImports() const { return m_imports; }
    JoinType GetJoinType() const { return m_type; }
    CompareSemantics GetSemantics() const { return m_semantics; }
    /// Where a cancel of a running build is posted. Any thread.
    const RefCntPtr<ProgressCallback>& GetProgressCallback() const { return m_progress; }

protected:
    /// Makes both columns of the key `ordinal` comparable. Raises 40225.
    virtual void CastColumn(const std::wstring& outer, const std::wstring& inner, unsigned ordinal);
    /// Builds the inner table and returns its row count.
    virtual uint64_t BuildInner(unsigned pageSize);
    /// Finds the key columns that are compared, by casts where the types or the dictionaries of a pair differ.
    virtual void EnforceCompatibility(unsigned pageSize);
    /// Builds the inner table and loads it into the grouping.
    virtual void HashInner(unsigned pageSize);
    /// Fills the imported columns of the `count` rows that `sel` lists, or of the first ones, with the inner rows
    /// `rows` (unsigned 32-bit, by position in the page); null where that is Grouping::noGroup. Of a page of `extent`.
    virtual void ImportInner(unsigned count, unsigned extent, const unsigned* rows, const unsigned* sel);
    /// Whether an outer row meets all inner rows of its key, or the first only.
    virtual bool FollowsLinks() const { return true; }
    /// Makes a page of the further matches of the outer page, at most `pageSize` of them; false when there is none.
    virtual bool NextLink(unsigned pageSize);
    /// Finds the inner rows that were not matched.
    virtual void BuildUnmatched();
    /// Makes a page of at most `pageSize` unmatched inner rows; 0 at the end.
    virtual unsigned NextUnmatched(unsigned pageSize);

private:
    enum class Phase { unhashed, outer, unmatched, ended };

    bool KeepsOuter() const { return m_type == LeftJoin || m_type == FullJoin; }
    bool KeepsInner() const { return m_type == RightJoin || m_type == FullJoin; }
    unsigned NextOuter(unsigned pageSize);
    void ChooseGrouping(unsigned pageSize);
    std::vector<GroupingIdType> Strategies() const;
    void DescribeGrouping() const;
    bool AreCellsAlike() const;
    RefCntPtr<Table> CopyKeys() const;
    void CheckCancelled() const;

    const RefCntPtr<Table> m_inner;
    const NamePairs m_keys;
    const NamePairs m_imports;
    const JoinType m_type;
    const CompareSemantics m_semantics;
    const RefCntPtr<ProgressCallback> m_progress;

    // The keys as they are compared: columns of the outer flow with casts over it, and of a table that has the rows of
    // the inner one.
    RefCntPtr<DataFlow> m_outer;
    RefCntPtr<Table> m_keyTable;
    RefCntPtr<Table> m_keyCells;
    std::vector<std::wstring> m_outerKeys;
    std::vector<std::wstring> m_innerKeys;
    std::vector<RefCntPtr<Exp>> m_outerCasts;
    std::vector<RefCntPtr<Exp>> m_innerCasts;

    RefCntPtr<Grouping> m_grouping;
    RefCntPtr<SharedJoinGrouping> m_shared;  // the grouping, when it is one
    RefCntPtr<Grouping::Context> m_context;
    mutable JoinColumns m_shown;
    Phase m_phase = Phase::unhashed;
    uint64_t m_innerCount = 0;

    std::vector<unsigned> m_groups;     // by position in the outer page
    std::vector<unsigned> m_hits;       // positions of the outer rows with a match, with one more place behind the last
    const unsigned* m_links = nullptr;  // by inner row; null where no key has two rows
    RefCntPtr<Column> m_linkColumn;

    // Of the outer page: the rows that have further matches, and where the page of links stands in them.
    std::vector<unsigned> m_linked;
    size_t m_nextLinked = 0;
    unsigned m_linkRow = 0;  // the next inner row of m_linked[m_nextLinked]

    // The rows of a page that is not the outer one's.
    std::vector<unsigned> m_outerRows;
    std::vector<unsigned> m_innerRows;

    const unsigned char* m_matched = nullptr;
    uint64_t m_nextUnmatched = 0;
};

}  // namespace qve
