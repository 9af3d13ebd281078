#include "vql/VQLQueryFormatter.h"

#include <sstream>

#include "vql/VQLExpressionFormatter.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLQueries.h"
#include "vql/status.h"
#include "vql/syntax/VQLSymbols.h"

namespace qve {

namespace {

using List = VQLFormatter::Scope;

const std::wstring& JoinWord(VQLJoinType type) {
    switch (type) {
        case VQLJoinType::inner:
            return VQLSymbols::symJoin;
        case VQLJoinType::left:
            return VQLSymbols::symLeftJoin;
        case VQLJoinType::right:
            return VQLSymbols::symRightJoin;
        case VQLJoinType::full:
            return VQLSymbols::symFullJoin;
    }
    throw VQLException(status::VQLQueryFormatter_VisitJoin, L"unknown join type");
}

/// "name=(item item)"
template <class Range, class Text>
std::wstring Annotation(const wchar_t* name, const Range& range, Text text) {
    std::wstring annotation = std::wstring(name) + L"=(";
    bool first = true;
    for (const auto& item : range) {
        if (!first) annotation += L' ';
        first = false;
        annotation += text(item);
    }
    return annotation + L")";
}

std::wstring Name(const VQLIdentifier& name) {
    return name.AsString();
}

}  // namespace

void VQLQueryFormatter::Format(const RefCntPtr<VQLExpression>& expression) {
    VQLExpressionFormatter formatter(m_formatter);
    formatter.SetIncludeProperties(m_includeProperties);
    formatter(expression);
}

void VQLQueryFormatter::Format(const VQLBindings& bindings) {
    const List list(m_formatter);
    for (const auto& [name, expression] : bindings) {
        const List binding(m_formatter, name.AsString());
        Format(expression);
        const auto* literal = dynamic_cast<const VQLLiteralExpression*>(expression.get());
        if (literal && literal->GetUsrProps().has(usrpropkey::collation)) Format(literal->GetUsrProps());
    }
}

void VQLQueryFormatter::Format(const VQLOrderQuery::Orders& orders) {
    const List list(m_formatter);
    for (const VQLOrderQuery::Order& order : orders) {
        const List entry(m_formatter);
        Format(order.expression);
        m_formatter.Output(order.sense == VQLSortSense::ascending ? VQLSymbols::symAsc : VQLSymbols::symDesc);
        if (!order.output.empty()) m_formatter.Output(order.output.AsString());
    }
}

void VQLQueryFormatter::Format(const VQLColumnMap& columnMap) {
    const List list(m_formatter);
    for (const auto& [from, to] : columnMap) {
        const List pair(m_formatter, from.AsString());
        m_formatter.Output(to.AsString());
    }
}

void VQLQueryFormatter::Format(const usrprops& properties) {
    const List list(m_formatter);
    for (const auto& [key, value] : OrderedUserProperties(properties)) {
        const List pair(m_formatter, FormatString(UsrPropKey_ToString(key)));
        m_formatter.Output(FormatString(value));
    }
}

void VQLQueryFormatter::Format(const std::vector<usrprops>& schema) {
    const List list(m_formatter);
    for (const usrprops& column : schema) Format(column);
}

void VQLQueryFormatter::Format(const std::vector<VQLIdentifier>& identifiers) {
    const List list(m_formatter);
    for (const VQLIdentifier& identifier : identifiers) m_formatter.Output(identifier.AsString());
}

void VQLQueryFormatter::AnnotateScan(const VQLIdentifierSet& scanColumns) {
    if (m_includeProperties && !scanColumns.empty()) m_formatter.Comment(Annotation(L"scan", scanColumns, Name));
}

void VQLQueryFormatter::AnnotateColumnMap(const VQLColumnMap& columnMap) {
    if (!m_includeProperties || columnMap.Empty()) return;
    m_formatter.Comment(Annotation(L"colmap", columnMap, [](const VQLColumnMap::Entry& entry) {
        return L"(" + entry.first.AsString() + L" " + entry.second.AsString() + L")";
    }));
}

void VQLQueryFormatter::Annotate(const VQLQuery& query) {
    if (!m_includeProperties) return;
    if (query.HasColumnSpace())
        m_formatter.Comment(Annotation(L"columns", query.GetColumnSpace()->GetColumns(), [](const auto& column) {
            return L"(" + column->GetName().AsString() + L" " + FormatDataType(column->GetDataType()) + L")";
        }));
    if (!query.GetUniqueKeys().empty())
        m_formatter.Comment(Annotation(L"unique", query.GetUniqueKeys(),
                                       [](const VQLIdentifierSet& key) { return Annotation(L"key", key, Name); }));
    if (!query.GetSortSpecsList().empty())
        m_formatter.Comment(Annotation(L"sorts", query.GetSortSpecsList(), [](const VQLQuery::SortSpecs& specs) {
            return Annotation(L"sort", specs, [](const VQLQuery::SortSpec& spec) {
                return spec.column.AsString() + (spec.sense == VQLSortSense::ascending ? L" Asc" : L" Desc");
            });
        }));
    if (!query.GetEquivalences().empty())
        m_formatter.Comment(Annotation(L"equivalence", query.GetEquivalences(), [](const auto& entry) {
            return entry.first.AsString() + L" " + std::to_wstring(entry.second);
        }));
}

void VQLQueryFormatter::VisitTable(VQLTableQuery& query) {
    const List list(m_formatter, VQLSymbols::symTable);
    m_formatter.Output(query.GetTableName().AsString());
    if (!query.GetDatabasePath().empty()) m_formatter.Output(FormatString(query.GetDatabasePath()));
    if (!query.GetColumnMap().Empty()) Format(query.GetColumnMap());
    AnnotateScan(query.GetScanColumns());
    Annotate(query);
}

void VQLQueryFormatter::VisitDomain(VQLDomainQuery& query) {
    const List list(m_formatter, VQLSymbols::symDomain);
    m_formatter.Output(query.GetQualifiedColumnName().AsString());
    if (!query.GetDatabasePath().empty()) m_formatter.Output(FormatString(query.GetDatabasePath()));
    if (!query.GetColumnMap().Empty()) Format(query.GetColumnMap());
    AnnotateScan(query.GetScanColumns());
    Annotate(query);
}

void VQLQueryFormatter::VisitText(VQLTextQuery& query) {
    const List list(m_formatter, VQLSymbols::symText);
    m_formatter.Output(FormatString(query.GetPath()));
    if (!query.GetSchema().empty() || !query.GetTextProperties().empty()) Format(query.GetSchema());
    if (!query.GetTextProperties().empty()) Format(query.GetTextProperties());
    AnnotateScan(query.GetScanColumns());
    AnnotateColumnMap(query.GetColumnMap());
    Annotate(query);
}

void VQLQueryFormatter::VisitSelect(VQLSelectQuery& query) {
    const List list(m_formatter, VQLSymbols::symSelect);
    (*this)(query.GetInput());
    Format(query.GetPredicate());
    Annotate(query);
}

void VQLQueryFormatter::VisitProject(VQLProjectQuery& query) {
    const List list(m_formatter, VQLSymbols::symProject);
    (*this)(query.GetInput());
    Format(query.GetBindings());
    Annotate(query);
}

void VQLQueryFormatter::VisitRestrict(VQLRestrictQuery& query) {
    const List list(m_formatter, VQLSymbols::symRestrict);
    (*this)(query.GetInput());
    Format(query.GetIdentifiers());
    Annotate(query);
}

void VQLQueryFormatter::VisitPivot(VQLPivotQuery& query) {
    const auto formatGroup = [&](const VQLPivotQuery::Group& group) {
        const List pair(m_formatter, group.first.AsString());
        Format(group.second);
    };
    const List list(m_formatter, VQLSymbols::symPivot);
    (*this)(query.GetInput());
    formatGroup(query.GetTags());
    {
        const List groups(m_formatter);
        for (const VQLPivotQuery::Group& group : query.GetGroups()) formatGroup(group);
    }
    if (!query.DefaultCollation().empty()) Format(usrprops{{usrpropkey::collation, query.DefaultCollation()}});
    Annotate(query);
}

void VQLQueryFormatter::VisitAggregate(VQLAggregateQuery& query) {
    const List list(m_formatter, VQLSymbols::symAggregate);
    (*this)(query.GetInput());
    Format(query.GetGroupBys());
    Format(query.GetMeasures());
    if (m_includeProperties && query.IsOrdered()) m_formatter.Comment(L"ordered");
    Annotate(query);
}

void VQLQueryFormatter::VisitOrder(VQLOrderQuery& query) {
    const List list(m_formatter, VQLSymbols::symOrder);
    (*this)(query.GetInput());
    Format(query.GetOrders());
    Annotate(query);
}

void VQLQueryFormatter::VisitTop(VQLTopQuery& query) {
    const List list(m_formatter, VQLSymbols::symTop);
    (*this)(query.GetInput());
    Format(query.GetOrders());
    m_formatter.Output(std::to_wstring(query.GetTopCount()));
    Annotate(query);
}

void VQLQueryFormatter::VisitJoin(VQLJoinQuery& query) {
    const List list(m_formatter, JoinWord(query.GetJoinType()));
    (*this)(query.GetLeft());
    (*this)(query.GetRight());
    {
        const List conditions(m_formatter);
        for (const auto& [left, right] : query.GetConditions()) {
            const List pair(m_formatter);
            Format(left);
            Format(right);
        }
    }
    Format(query.GetImports());
    if (query.IsLookup())
        m_formatter.Output(VQLSymbols::symIsLookup);
    else if (!query.UseEqualToComparison())
        m_formatter.Output(VQLSymbols::symIND);
    Annotate(query);
}

void VQLQueryFormatter::VisitIndexTable(VQLIndexTableQuery& query) {
    const List list(m_formatter, VQLSymbols::symIndexTable);
    m_formatter.Output(query.GetTableName().AsString());
    m_formatter.Output(query.GetRLEColumnName().AsString());
    AnnotateColumnMap(query.GetColumnMap());
    Annotate(query);
}

void VQLQueryFormatter::VisitIndexJoin(VQLIndexJoinQuery& query) {
    const List list(m_formatter, VQLSymbols::symIndexJoin);
    (*this)(query.GetLeft());
    (*this)(query.GetRight());
    Format(query.GetImports());
    m_formatter.Output(query.GetStartColumnName().AsString());
    m_formatter.Output(query.GetCountColumnName().AsString());
    Annotate(query);
}

void VQLQueryFormatter::VisitExchange(VQLExchangeQuery& query) {
    const List list(m_formatter, VQLSymbols::symExchange);
    (*this)(query.GetInput());
    m_formatter.Output(std::to_wstring(query.GetProducerCount()));
    Annotate(query);
}

void VQLQueryFormatter::VisitAppend(VQLAppendQuery& query) {
    const List list(m_formatter, VQLSymbols::symAppend);
    (*this)(query.GetLeft());
    for (size_t i = 0; i < query.GetRightList().size(); ++i) {
        (*this)(query.GetRightList()[i]);
        const List renames(m_formatter);
        for (const auto& [from, to] : query.GetRenamesList()[i]) {
            const List pair(m_formatter, from.AsString());
            m_formatter.Output(to.AsString());
        }
    }
    Annotate(query);
}

void VQLQueryFormatter::VisitRemoteQuery(VQLRemoteQuery& query) {
    const List list(m_formatter, VQLSymbols::symRemoteQuery);
    m_formatter.Output(query.GetName());
    Format(query.GetSchema());
    AnnotateScan(query.GetScanColumns());
    AnnotateColumnMap(query.GetColumnMap());
    if (m_includeProperties)
        m_formatter.Comment(
            Annotation(L"remoteprops", OrderedUserProperties(query.GetRemoteProperties()), [](const auto& pair) {
                return L"(" + FormatString(UsrPropKey_ToString(pair.first)) + L" " + FormatString(pair.second) + L")";
            }));
    Annotate(query);
}

std::wstring FormatQuery(const RefCntPtr<VQLQuery>& query, bool includeProperties) {
    std::wostringstream stream;
    VQLFormatter formatter(stream);
    VQLQueryFormatter queryFormatter(formatter);
    queryFormatter.SetIncludeProperties(includeProperties);
    queryFormatter(query);
    return stream.str();
}

}  // namespace qve
