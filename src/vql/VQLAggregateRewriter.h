#pragma once

#include <functional>
#include <initializer_list>
#include <string_view>

#include "vql/VQLFuncallExpression.h"
#include "vql/VQLQueryCloner.h"

namespace qve {

class VQLIdentifierFactory;

/// Says of an aggregate that the engine computes all its measures as they stand, so that no rewrite shall touch it.
using VQLKeepAggregate = std::function<bool(const VQLAggregateQuery&)>;

/// The base of the passes that express one kind of measures by simpler ones. Aggregates without such a measure stay as
/// they are; of the others a pass sees input, group-bys and measures, and gives back a query whose columns include all
/// group-bys and measures under their names.
class VQLAggregateRewriter : public VQLQueryCloner {
public:
    RefCntPtr<VQLQuery> VisitAggregate(const VQLAggregateQuery& query) final;
    using VQLQueryCloner::Clone;
    /// Throws VQLException 48035 "query too large" where rewrites within rewrites multiply the input beyond measure.
    RefCntPtr<VQLQuery> Clone(const RefCntPtr<VQLQuery>& query) final;

protected:
    /// `factory` must outlive the rewriter. `kinds` are the functions that the pass replaces; their names must outlive
    /// it too.
    VQLAggregateRewriter(VQLIdentifierFactory& factory, std::initializer_list<std::wstring_view> kinds,
                         VQLKeepAggregate keep = {});

    /// `groupBys` bind columns of `input` to their own names. All expressions may be used in the result as they are.
    virtual RefCntPtr<VQLQuery> Rewrite(RefCntPtr<VQLQuery> input, const VQLBindings& groupBys,
                                        const VQLBindings& measures) = 0;

    /// How often the result of Rewrite reads its input.
    virtual size_t CountUses(const VQLBindings& measures) const;

    /// Whether the pass replaces this measure.
    bool IsOfKind(const VQLBinding& measure) const;
    /// The call that a measure is. Throws VQLException "measures must be funcalls".
    static const VQLFuncallExpression& CallOf(const VQLBinding& measure);
    VQLIdentifierFactory& GetFactory() const { return m_factory; }

    // Nodes of the new tree. They have no position and get their types when the tree is checked.
    static RefCntPtr<VQLExpression> Column(const VQLIdentifier& name);
    static RefCntPtr<VQLExpression> Call(const wchar_t* function, VQLExpressions arguments);
    static RefCntPtr<VQLExpression> Number(long long value);
    /// `input` itself when there is nothing to bind.
    static RefCntPtr<VQLQuery> Project(RefCntPtr<VQLQuery> input, VQLBindings bindings);
    static RefCntPtr<VQLQuery> Aggregate(RefCntPtr<VQLQuery> input, VQLBindings groupBys, VQLBindings measures);
    /// The rows of `left`, each with the columns `imports` of the row of its group in `right`. Null group-bys match;
    /// without group-bys `right` is one row for all.
    static RefCntPtr<VQLQuery> JoinGroups(RefCntPtr<VQLQuery> left, RefCntPtr<VQLQuery> right,
                                          const VQLBindings& groupBys, const VQLBindings& imports);

private:
    bool HasTrivialGroupBys(const VQLAggregateQuery& query) const;
    RefCntPtr<VQLQuery> MakeTrivialGroupBys(const VQLAggregateQuery& query, RefCntPtr<VQLQuery> input);

    VQLIdentifierFactory& m_factory;
    const std::vector<std::wstring_view> m_kinds;
    const VQLKeepAggregate m_keep;
    size_t m_size = 0;  // of the trees so far at this level, what is shared counted as often as it is read
};

}  // namespace qve
