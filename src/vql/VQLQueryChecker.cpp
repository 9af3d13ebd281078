#include "vql/VQLQueryChecker.h"

#include <algorithm>

#include "metrics/Scope.h"
#include "vql/VQLDerivedFacts.h"
#include "vql/VQLExpressionChecker.h"
#include "vql/VQLQueries.h"
#include "vql/status.h"

namespace qve {

namespace {

[[noreturn]] void Raise(const wchar_t* message, const VQLQuery& query) {
    throw VQLParseException(status::VQLQueryChecker_RaiseQuery, message, query.GetPosition());
}

[[noreturn]] void Raise(const wchar_t* message, const VQLExpression& expression) {
    throw VQLParseException(status::VQLQueryChecker_RaiseExpression, message, expression.GetPosition());
}

[[noreturn]] void RaiseName(std::wstring message, const VQLQuery& query) {
    throw VQLParseException(status::VQLQueryChecker_RaiseName, std::move(message), query.GetPosition());
}

[[noreturn]] void RaiseNoColumn(const VQLIdentifier& name, const VQLQuery& query) {
    RaiseName(L"no such column " + name.AsString(), query);
}

const RefCntPtr<VQLColumn>& FindColumn(const VQLColumnSpace& columns, const VQLIdentifier& name,
                                       const VQLQuery& query) {
    if (!columns.HasColumn(name)) RaiseNoColumn(name, query);
    return columns.GetColumn(name);
}

RefCntPtr<VQLColumnSpace> Copy(const RefCntPtr<VQLColumnSpace>& columns) {
    return MakeRef<VQLColumnSpace>(*columns);
}

}  // namespace

void VQLQueryChecker::operator()(const RefCntPtr<VQLQuery>& query) {
    Metrics::Scope scope("VQLQueryChecker");
    Visit(query);
}

void VQLQueryChecker::Visit(const RefCntPtr<VQLQuery>& query) {
    if (m_forceRebuild || !query->HasColumnSpace()) query->Accept(*this);
}

void VQLQueryChecker::Visit(const RefCntPtr<VQLExpression>& expression, const VQLQuery& input) {
    VQLExpressionChecker(*input.GetColumnSpace(), m_functions, GetSessionSymbols())(expression);
}

void VQLQueryChecker::Store(VQLQuery& query, RefCntPtr<VQLColumnSpace> columns, VQLDerivedFacts facts) const {
    query.SetColumnSpace(std::move(columns));
    if (!m_deriveSortsAndUniqueKeys) {
        facts.SetUniqueKeys({});
        facts.ClearSorts();
    }
    facts.Store(query);
}

RefCntPtr<VQLColumn> VQLQueryChecker::MakeColumn(const VQLIdentifier& name, const VQLExpression& expression) {
    usrprops properties;
    const std::wstring* collation = expression.GetPrimitiveProperties().get(usrpropkey::collation);
    if (collation && expression.GetDataType() == VQLDataType::string) properties.set(usrpropkey::collation, *collation);
    return MakeRef<VQLColumn>(name, expression.GetDataType(), std::move(properties));
}

void VQLQueryChecker::VisitSelect(VQLSelectQuery& query) {
    Visit(query.GetInput());
    Visit(query.GetPredicate(), *query.GetInput());
    const VQLExpression& predicate = *query.GetPredicate();
    if (!predicate.IsScalar()) Raise(L"select predicate must be scalar", predicate);
    if (predicate.GetDataType() != VQLDataType::boolean) Raise(L"select predicate must be boolean", predicate);
    Store(query, Copy(query.GetInput()->GetColumnSpace()), VQLDerivedFacts::Of(*query.GetInput()));
}

void VQLQueryChecker::VisitProject(VQLProjectQuery& query) {
    Visit(query.GetInput());
    const auto columns = Copy(query.GetInput()->GetColumnSpace());
    for (const auto& [name, expression] : query.GetBindings()) {
        Visit(expression, *query.GetInput());
        if (!expression->IsScalar()) Raise(L"project expressions must be scalar", *expression);
        columns->AddColumn(MakeColumn(name, *expression));
    }
    VQLDerivedFacts facts =
        VQLDerivedFacts::Of(*query.GetInput()).Through(VQLDerivedFacts::Carriers(query.GetBindings(), true));
    facts.AddDependenciesFromBindings(query.GetBindings(), *columns);
    facts.AddEquivalencesFromBindings(query.GetBindings(), *columns);
    Store(query, columns, std::move(facts));
}

void VQLQueryChecker::VisitRestrict(VQLRestrictQuery& query) {
    Visit(query.GetInput());
    VQLColumnSpace::Columns kept;
    for (const VQLIdentifier& name : query.GetIdentifiers())
        kept.push_back(FindColumn(*query.GetInput()->GetColumnSpace(), name, query));
    const auto columns = MakeRef<VQLColumnSpace>(std::move(kept));
    Store(query, columns, VQLDerivedFacts::Of(*query.GetInput()).Through(VQLDerivedFacts::Carriers(*columns)));
}

void VQLQueryChecker::VisitPivot(VQLPivotQuery& query) {
    Visit(query.GetInput());
    const VQLColumnSpace& input = *query.GetInput()->GetColumnSpace();
    VQLIdentifierSet pivoted;
    VQLColumnSpace::Columns made;
    for (const auto& [name, members] : query.GetGroups()) {
        for (const VQLIdentifier& member : members) {
            const VQLColumn* column = input.FindColumn(member);
            if (!column) RaiseName(L"no such pivot column " + member.AsString(), query);
            if (column->GetDataType() != input.GetColumn(members[0])->GetDataType())
                RaiseName(L"pivoted data type not unique for group " + name.AsString(), query);
            pivoted.insert(member);
        }
        const VQLColumn& first = *input.GetColumn(members[0]);
        usrprops properties;
        if (const std::wstring* collation = first.GetProperties().get(usrpropkey::collation))
            properties.set(usrpropkey::collation, *collation);
        made.push_back(MakeRef<VQLColumn>(name, first.GetDataType(), std::move(properties)));
    }
    const VQLIdentifier& tag = query.GetTags().first;
    usrprops tagProperties;
    if (!query.DefaultCollation().empty()) tagProperties.set(usrpropkey::collation, query.DefaultCollation());
    made.push_back(MakeRef<VQLColumn>(tag, VQLDataType::string, std::move(tagProperties)));

    VQLColumnSpace::Columns kept;
    for (const RefCntPtr<VQLColumn>& column : input.GetColumns())
        if (!pivoted.count(column->GetName())) kept.push_back(column);
    auto surviving = MakeRef<VQLColumnSpace>(kept);
    kept.insert(kept.end(), made.begin(), made.end());
    const auto columns = MakeRef<VQLColumnSpace>(std::move(kept));

    VQLDerivedFacts facts = VQLDerivedFacts::Of(*query.GetInput()).Through(VQLDerivedFacts::Carriers(*surviving));
    // A row becomes one for each tag: what told rows apart now tells them apart only together with the tag.
    VQLQuery::UniqueKeys keys;
    for (VQLIdentifierSet key : facts.GetUniqueKeys()) {
        key.insert(tag);
        keys.insert(std::move(key));
    }
    facts.SetUniqueKeys(std::move(keys));
    facts.ClearSorts();
    Store(query, columns, std::move(facts));
}

void VQLQueryChecker::VisitAggregate(VQLAggregateQuery& query) {
    const VQLQuery& input = *query.GetInput();
    Visit(query.GetInput());
    VQLColumnSpace::Columns made;
    VQLIdentifierSet key;
    for (const auto& [name, expression] : query.GetGroupBys()) {
        Visit(expression, input);
        if (!expression->IsScalar()) Raise(L"group-by expressions must be scalar", *expression);
        made.push_back(MakeColumn(name, *expression));
        key.insert(name);
    }
    for (const auto& [name, expression] : query.GetMeasures()) {
        Visit(expression, input);
        if (!expression->IsAggregate()) Raise(L"measure expressions must be aggregate", *expression);
        made.push_back(MakeColumn(name, *expression));
    }
    if (query.IsOrdered()) {
        if (query.GetGroupBys().empty()) Raise(L"group-by expressions of an ordered aggregate cannot be empty", query);
        VQLIdentifierSet sources;
        for (const auto& [name, expression] : query.GetGroupBys()) {
            const VQLIdentifier* source = VQLPlainColumn(expression);
            if (!source) Raise(L"group-by expressions of an ordered aggregate must be trivial", *expression);
            sources.insert(*source);
        }
        if (!input.AreColumnsSorted(sources))
            Raise(L"no matching sort for a group-by clause of an ordered aggregate", query);
    }
    const auto columns = MakeRef<VQLColumnSpace>(std::move(made));
    VQLDerivedFacts facts = VQLDerivedFacts::Of(input).Through(VQLDerivedFacts::Carriers(query.GetGroupBys(), false));
    if (!query.IsOrdered()) facts.ClearSorts();
    // A measure may have taken the name of a group-by.
    if (columns->GetColumns().size() == query.GetGroupBys().size() + query.GetMeasures().size())
        facts.AddUniqueKey(std::move(key));
    else
        facts = {};
    Store(query, columns, std::move(facts));
}

void VQLQueryChecker::CheckOrders(const VQLOrderQuery& query) {
    for (const VQLOrderQuery::Order& order : query.GetOrders()) {
        Visit(order.expression, *query.GetInput());
        if (!order.expression->IsScalar()) Raise(L"order expressions must be scalar", *order.expression);
    }
}

namespace {

/// The ordering that an order brings about, as far as columns of the output show it.
VQLQuery::SortSpecs SortSpecsOf(const VQLOrderQuery::Orders& orders, const VQLColumnSpace& output) {
    VQLQuery::SortSpecs specs;
    for (const VQLOrderQuery::Order& order : orders) {
        const VQLIdentifier* column = VQLPlainColumn(order.expression);
        if (column)
            specs.push_back({*column, order.sense});
        else if (!order.output.empty() && output.HasColumn(order.output))
            specs.push_back({order.output, order.sense});
        else
            break;
    }
    return specs;
}

}  // namespace

void VQLQueryChecker::VisitOrder(VQLOrderQuery& query) {
    Visit(query.GetInput());
    CheckOrders(query);
    const auto columns = Copy(query.GetInput()->GetColumnSpace());
    VQLDerivedFacts facts = VQLDerivedFacts::Of(*query.GetInput());
    for (const VQLOrderQuery::Order& order : query.GetOrders()) {
        if (order.output.empty()) continue;
        columns->AddColumn(MakeRef<VQLColumn>(order.output, VQLDataType::integer));
        facts.AddDependency(order.output, VQLColumnsOf(order.expression));
    }
    facts.ClearSorts();
    facts.AddSort(SortSpecsOf(query.GetOrders(), *columns));
    Store(query, columns, std::move(facts));
}

void VQLQueryChecker::VisitTop(VQLTopQuery& query) {
    Visit(query.GetInput());
    CheckOrders(query);
    const auto columns = Copy(query.GetInput()->GetColumnSpace());
    VQLDerivedFacts facts = VQLDerivedFacts::Of(*query.GetInput());
    facts.ClearSorts();
    facts.AddSort(SortSpecsOf(query.GetOrders(), *columns));
    Store(query, columns, std::move(facts));
}

void VQLQueryChecker::VisitExchange(VQLExchangeQuery& query) {
    Visit(query.GetInput());
    Store(query, Copy(query.GetInput()->GetColumnSpace()), VQLDerivedFacts::Of(*query.GetInput()));
}

void VQLQueryChecker::VisitJoin(VQLJoinQuery& query) {
    const RefCntPtr<VQLQuery>& left = query.GetLeft();
    const RefCntPtr<VQLQuery>& right = query.GetRight();
    Visit(left);
    for (const auto& [leftSide, rightSide] : query.GetConditions()) {
        Visit(leftSide, *left);
        if (!leftSide->IsScalar()) Raise(L"join expressions must be scalar", *leftSide);
    }
    Visit(right);
    VQLIdentifierSet leftKey, rightKey;
    for (const auto& [leftSide, rightSide] : query.GetConditions()) {
        Visit(rightSide, *right);
        if (!rightSide->IsScalar()) Raise(L"join expressions must be scalar", *rightSide);
        if (leftSide->GetDataType() != rightSide->GetDataType())
            Raise(L"join expressions must have same data type", *leftSide);
        if (const VQLIdentifier* column = VQLPlainColumn(leftSide)) leftKey.insert(*column);
        if (const VQLIdentifier* column = VQLPlainColumn(rightSide)) rightKey.insert(*column);
    }
    const auto columns = Copy(left->GetColumnSpace());
    VQLIdentifierSet imported;
    VQLColumnSpace::Columns keptColumns;
    for (const auto& [name, expression] : query.GetImports()) {
        Visit(expression, *right);
        if (!expression->IsScalar()) Raise(L"join expressions must be scalar", *expression);
        columns->AddColumn(MakeColumn(name, *expression));
        imported.insert(name);
    }
    for (const RefCntPtr<VQLColumn>& column : left->GetColumnSpace()->GetColumns())
        if (!imported.count(column->GetName())) keptColumns.push_back(column);

    // An import takes the place of a left column of its name.
    const VQLColumnSpace kept(std::move(keptColumns));
    const VQLDerivedFacts::Carriers leftCarriers(kept);
    const VQLDerivedFacts::Carriers rightCarriers(query.GetImports(), false);
    VQLDerivedFacts facts = VQLDerivedFacts::Of(*left).Through(leftCarriers);
    const VQLDerivedFacts rightFacts = VQLDerivedFacts::Of(*right).Through(rightCarriers);
    facts.Merge(rightFacts);
    facts.ClearSorts();
    VQLQuery::UniqueKeys keys;
    if (query.GetJoinType() == VQLJoinType::inner) {
        for (const auto& [leftSide, rightSide] : query.GetConditions()) {
            const VQLIdentifier* leftColumn = VQLPlainColumn(leftSide);
            const VQLIdentifier* rightColumn = VQLPlainColumn(rightSide);
            if (!leftColumn || !rightColumn || !kept.HasColumn(*leftColumn)) continue;
            for (const VQLIdentifier& name : rightCarriers.Of(*rightColumn)) facts.AddEquivalence(*leftColumn, name);
        }
        if (right->IsUnique(rightKey)) keys = facts.GetUniqueKeys();
        if (left->IsUnique(leftKey)) keys.insert(rightFacts.GetUniqueKeys().begin(), rightFacts.GetUniqueKeys().end());
    }
    facts.SetUniqueKeys(std::move(keys));
    Store(query, columns, std::move(facts));
}

void VQLQueryChecker::VisitIndexJoin(VQLIndexJoinQuery& query) {
    Visit(query.GetLeft());
    Visit(query.GetRight());
    const VQLColumnSpace& right = *query.GetRight()->GetColumnSpace();
    for (const VQLIdentifier* name : {&query.GetStartColumnName(), &query.GetCountColumnName()})
        FindColumn(right, *name, query);
    const auto columns = Copy(query.GetLeft()->GetColumnSpace());
    for (const auto& [name, expression] : query.GetImports()) {
        Visit(expression, *query.GetRight());
        if (!expression->IsScalar()) Raise(L"join expressions must be scalar", *expression);
        columns->AddColumn(MakeColumn(name, *expression));
    }
    Store(query, columns, {});
}

namespace {

/// The type to which the values of two inputs of an append widen; unknown when there is none.
VQLDataType AppendedType(VQLDataType a, VQLDataType b) {
    const auto are = [&](VQLDataType x, VQLDataType y) { return (a == x && b == y) || (a == y && b == x); };
    if (a == b || b == VQLDataType::unknown) return a;
    if (a == VQLDataType::unknown) return b;
    if (are(VQLDataType::integer, VQLDataType::double_)) return VQLDataType::double_;
    if (are(VQLDataType::date, VQLDataType::datetime)) return VQLDataType::datetime;
    if (a == VQLDataType::spatial || b == VQLDataType::spatial) return VQLDataType::unknown;
    return VQLDataType::string;
}

}  // namespace

void VQLQueryChecker::VisitAppend(VQLAppendQuery& query) {
    Visit(query.GetLeft());
    VQLColumnSpace::Columns supplied = query.GetLeft()->GetColumnSpace()->GetColumns();
    for (size_t i = 0; i < query.GetRightList().size(); ++i) {
        Visit(query.GetRightList()[i]);
        const VQLColumnSpace& left = *query.GetLeft()->GetColumnSpace();
        const VQLColumnSpace& right = *query.GetRightList()[i]->GetColumnSpace();
        VQLColumnMap sources;  // from left to right columns
        VQLIdentifierSet renamed;
        for (const auto& [from, to] : query.GetRenamesList()[i]) {
            FindColumn(right, from, query);
            FindColumn(left, to, query);
            const bool again = !renamed.insert(from).second;
            if (again || sources.HasMapping(to))
                RaiseName(L"Column " + (again ? from : to).AsString() +
                              L" has been mapped to multiple columns in the other input",
                          query);
            sources.Insert(to, from);
        }
        std::erase_if(supplied, [&](const RefCntPtr<VQLColumn>& column) {
            const VQLIdentifier& source = sources.PartialMap(column->GetName());
            // A column that goes by another name in the output is not there under its own.
            const bool hidden = !sources.HasMapping(column->GetName()) && renamed.count(source);
            return hidden || !right.FindColumn(source);
        });
        for (RefCntPtr<VQLColumn>& column : supplied) {
            const VQLDataType other = right.FindColumn(sources.PartialMap(column->GetName()))->GetDataType();
            const VQLDataType common = AppendedType(column->GetDataType(), other);
            if (common == VQLDataType::unknown && column->GetDataType() != other)
                RaiseName(L"append columns must have same data type: " + column->GetName().AsString(), query);
            if (common != column->GetDataType()) column = MakeRef<VQLColumn>(column->GetName(), common);
        }
    }
    Store(query, MakeRef<VQLColumnSpace>(std::move(supplied)), {});
}

}  // namespace qve
