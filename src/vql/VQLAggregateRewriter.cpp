#include "vql/VQLAggregateRewriter.h"

#include <algorithm>

#include "vql/VQLExpressions.h"
#include "vql/status.h"
#include "vql/syntax/VQLIdentifierFactory.h"

namespace qve {
namespace {

// Far above any query that somebody means, and far below what costs memory.
constexpr size_t mostNodes = 100'000;

}  // namespace

VQLAggregateRewriter::VQLAggregateRewriter(VQLIdentifierFactory& factory,
                                           std::initializer_list<std::wstring_view> kinds, VQLKeepAggregate keep)
    : VQLQueryCloner(factory.GetDictionary()), m_factory(factory), m_kinds(kinds), m_keep(std::move(keep)) {}

const VQLFuncallExpression& VQLAggregateRewriter::CallOf(const VQLBinding& measure) {
    const auto* call = dynamic_cast<const VQLFuncallExpression*>(measure.second.get());
    if (!call) throw VQLException(status::VQLAggregateRewriter_CallOf, L"measures must be funcalls");
    return *call;
}

bool VQLAggregateRewriter::IsOfKind(const VQLBinding& measure) const {
    const auto* call = dynamic_cast<const VQLFuncallExpression*>(measure.second.get());
    return call && std::find(m_kinds.begin(), m_kinds.end(), call->GetName()) != m_kinds.end();
}

RefCntPtr<VQLExpression> VQLAggregateRewriter::Column(const VQLIdentifier& name) {
    return MakeRef<VQLIdentifierExpression>(VQLPosition(), name);
}
RefCntPtr<VQLExpression> VQLAggregateRewriter::Call(const wchar_t* function, VQLExpressions arguments) {
    return MakeRef<VQLFuncallExpression>(VQLPosition(), function, std::move(arguments));
}
RefCntPtr<VQLExpression> VQLAggregateRewriter::Number(long long value) {
    return MakeRef<VQLLiteralExpression>(VQLPosition(), VQLDataValue(value));
}

RefCntPtr<VQLQuery> VQLAggregateRewriter::Project(RefCntPtr<VQLQuery> input, VQLBindings bindings) {
    if (bindings.empty()) return input;
    return MakeRef<VQLProjectQuery>(VQLPosition(), std::move(input), std::move(bindings));
}
RefCntPtr<VQLQuery> VQLAggregateRewriter::Aggregate(RefCntPtr<VQLQuery> input, VQLBindings groupBys,
                                                    VQLBindings measures) {
    return MakeRef<VQLAggregateQuery>(VQLPosition(), std::move(input), std::move(groupBys), std::move(measures));
}
RefCntPtr<VQLQuery> VQLAggregateRewriter::JoinGroups(RefCntPtr<VQLQuery> left, RefCntPtr<VQLQuery> right,
                                                     const VQLBindings& groupBys, const VQLBindings& imports) {
    VQLJoinQuery::Conditions conditions;
    for (const auto& [name, expression] : groupBys) conditions.emplace_back(Column(name), Column(name));
    VQLBindings imported;
    for (const auto& [name, expression] : imports) imported.emplace_back(name, Column(name));
    return MakeRef<VQLJoinQuery>(VQLPosition(), std::move(left), std::move(right), std::move(conditions),
                                 std::move(imported), VQLJoinType::inner, false, false);
}

RefCntPtr<VQLQuery> VQLAggregateRewriter::Clone(const RefCntPtr<VQLQuery>& query) {
    const size_t before = std::exchange(m_size, 0);
    RefCntPtr<VQLQuery> clone = VQLQueryCloner::Clone(query);
    m_size += before + 1;
    if (m_size > mostNodes) throw VQLException(status::VQLAggregateRewriter_TooLarge, L"query too large");
    return clone;
}

size_t VQLAggregateRewriter::CountUses(const VQLBindings&) const {
    return 2;  // for what is joined back, and for the rows that it is joined to
}

bool VQLAggregateRewriter::HasTrivialGroupBys(const VQLAggregateQuery& query) const {
    return std::all_of(query.GetGroupBys().begin(), query.GetGroupBys().end(), [](const VQLBinding& groupBy) {
        const auto* column = dynamic_cast<const VQLIdentifierExpression*>(groupBy.second.get());
        return column && column->GetIdentifier() == groupBy.first;
    });
}

// The group-bys are computed under fresh names, since theirs may be those of columns that the measures read.
RefCntPtr<VQLQuery> VQLAggregateRewriter::MakeTrivialGroupBys(const VQLAggregateQuery& query,
                                                              RefCntPtr<VQLQuery> input) {
    VQLBindings below, groupBys, above;
    for (const auto& [name, expression] : query.GetGroupBys()) {
        const VQLIdentifier key = m_factory();
        below.emplace_back(key, Clone(expression));
        groupBys.emplace_back(key, Column(key));
        above.emplace_back(name, Column(key));
    }
    return Project(Rewrite(Project(std::move(input), std::move(below)), groupBys, Clone(query.GetMeasures())),
                   std::move(above));
}

RefCntPtr<VQLQuery> VQLAggregateRewriter::VisitAggregate(const VQLAggregateQuery& query) {
    const bool touched = std::any_of(query.GetMeasures().begin(), query.GetMeasures().end(),
                                     [this](const VQLBinding& measure) { return IsOfKind(measure); });
    if (!touched || (m_keep && m_keep(query))) return VQLQueryCloner::VisitAggregate(query);
    RefCntPtr<VQLQuery> input = Clone(query.GetInput());
    m_size *= CountUses(query.GetMeasures());
    if (!HasTrivialGroupBys(query)) return MakeTrivialGroupBys(query, std::move(input));
    return Rewrite(std::move(input), Clone(query.GetGroupBys()), Clone(query.GetMeasures()));
}

}  // namespace qve
