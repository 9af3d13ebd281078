#include "vql/VQLQueries.h"

#include "storage/Column.h"

namespace qve {

VQLTableQuery::VQLTableQuery(VQLPosition position, VQLIdentifier tableName, std::wstring databasePath,
                             VQLColumnMap columnMap, VQLIdentifierSet scanColumns, unsigned parallelism,
                             VQLIdentifierSet clusterNames)
    : VQLQuery(position),
      m_tableName(std::move(tableName)),
      m_databasePath(std::move(databasePath)),
      m_columnMap(std::move(columnMap)),
      m_scanColumns(std::move(scanColumns)),
      m_parallelism(parallelism),
      m_clusterNames(std::move(clusterNames)) {}

VQLDomainQuery::VQLDomainQuery(VQLPosition position, VQLIdentifier qualifiedColumnName, std::wstring databasePath,
                               VQLColumnMap columnMap, VQLIdentifierSet scanColumns, unsigned parallelism,
                               VQLIdentifierSet clusterNames)
    : VQLQuery(position),
      m_qualifiedColumnName(std::move(qualifiedColumnName)),
      m_columnName(m_qualifiedColumnName.Tail()),
      m_tableName(m_qualifiedColumnName.Head()),
      m_databasePath(std::move(databasePath)),
      m_columnMap(std::move(columnMap)),
      m_scanColumns(std::move(scanColumns)),
      m_parallelism(parallelism),
      m_clusterNames(std::move(clusterNames)) {}

VQLTextQuery::VQLTextQuery(VQLPosition position, std::wstring path, std::vector<usrprops> schema,
                           usrprops textProperties, VQLIdentifierSet scanColumns, VQLColumnMap columnMap)
    : VQLQuery(position),
      m_path(std::move(path)),
      m_schema(std::move(schema)),
      m_textProperties(std::move(textProperties)),
      m_scanColumns(std::move(scanColumns)),
      m_columnMap(std::move(columnMap)) {}

VQLSelectQuery::VQLSelectQuery(VQLPosition position, RefCntPtr<VQLQuery> input, RefCntPtr<VQLExpression> predicate)
    : VQLUnaryQuery(position, std::move(input)), m_predicate(std::move(predicate)) {}

VQLProjectQuery::VQLProjectQuery(VQLPosition position, RefCntPtr<VQLQuery> input, VQLBindings bindings)
    : VQLUnaryQuery(position, std::move(input)), m_bindings(std::move(bindings)) {}

VQLRestrictQuery::VQLRestrictQuery(VQLPosition position, RefCntPtr<VQLQuery> input,
                                   std::vector<VQLIdentifier> identifiers)
    : VQLUnaryQuery(position, std::move(input)), m_identifiers(std::move(identifiers)) {}

VQLPivotQuery::VQLPivotQuery(VQLPosition position, RefCntPtr<VQLQuery> input, Group tags, std::vector<Group> groups,
                             std::wstring defaultCollation)
    : VQLUnaryQuery(position, std::move(input)),
      m_tags(std::move(tags)),
      m_groups(std::move(groups)),
      m_defaultCollation(std::move(defaultCollation)) {}

VQLAggregateQuery::VQLAggregateQuery(VQLPosition position, RefCntPtr<VQLQuery> input, VQLBindings groupBys,
                                     VQLBindings measures, bool ordered)
    : VQLUnaryQuery(position, std::move(input)),
      m_groupBys(std::move(groupBys)),
      m_measures(std::move(measures)),
      m_ordered(ordered) {}

VQLOrderQuery::VQLOrderQuery(VQLPosition position, RefCntPtr<VQLQuery> input, Orders orders)
    : VQLUnaryQuery(position, std::move(input)), m_orders(std::move(orders)) {}

VQLTopQuery::VQLTopQuery(VQLPosition position, RefCntPtr<VQLQuery> input, Orders orders, int topCount)
    : VQLOrderQuery(position, std::move(input), std::move(orders)), m_topCount(topCount) {}

VQLJoinQuery::VQLJoinQuery(VQLPosition position, RefCntPtr<VQLQuery> left, RefCntPtr<VQLQuery> right,
                           Conditions conditions, VQLBindings imports, VQLJoinType joinType, bool useEqualTo,
                           bool isLookup)
    : VQLQuery(position),
      m_left(std::move(left)),
      m_right(std::move(right)),
      m_conditions(std::move(conditions)),
      m_imports(std::move(imports)),
      m_joinType(joinType),
      m_useEqualTo(useEqualTo),
      m_isLookup(isLookup) {}

namespace {

/// The name of a column that the storage layer derives from `column`.
VQLIdentifier DerivedColumnName(const VQLIdentifier& column, const std::wstring& suffix, SymbolDictionary& dictionary) {
    const VQLIdentifier tail = column.Tail();
    return VQLIdentifier::Unquoted((tail.empty() ? suffix : tail.GetComponents()[0].AsString() + suffix), dictionary);
}

}  // namespace

VQLIndexTableQuery::VQLIndexTableQuery(VQLPosition position, VQLIdentifier tableName, std::wstring databasePath,
                                       VQLIdentifier rleColumnName, SymbolDictionary& dictionary,
                                       VQLColumnMap columnMap, unsigned parallelism, VQLIdentifierSet clusterNames)
    : VQLQuery(position),
      m_tableName(std::move(tableName)),
      m_databasePath(std::move(databasePath)),
      m_rleColumnName(std::move(rleColumnName)),
      m_startColumnName(DerivedColumnName(m_rleColumnName, Column::nameStart, dictionary)),
      m_countColumnName(DerivedColumnName(m_rleColumnName, Column::nameCount, dictionary)),
      m_columnMap(std::move(columnMap)),
      m_parallelism(parallelism),
      m_clusterNames(std::move(clusterNames)) {}

VQLIndexJoinQuery::VQLIndexJoinQuery(VQLPosition position, RefCntPtr<VQLQuery> left, RefCntPtr<VQLQuery> right,
                                     VQLBindings imports, VQLIdentifier startColumnName, VQLIdentifier countColumnName)
    : VQLQuery(position),
      m_left(std::move(left)),
      m_right(std::move(right)),
      m_imports(std::move(imports)),
      m_startColumnName(std::move(startColumnName)),
      m_countColumnName(std::move(countColumnName)) {}

VQLExchangeQuery::VQLExchangeQuery(VQLPosition position, RefCntPtr<VQLQuery> input, unsigned producerCount)
    : VQLUnaryQuery(position, std::move(input)), m_producerCount(producerCount) {}

VQLAppendQuery::VQLAppendQuery(VQLPosition position, RefCntPtr<VQLQuery> left,
                               std::vector<RefCntPtr<VQLQuery>> rightList, std::vector<Renames> renamesList)
    : VQLQuery(position),
      m_left(std::move(left)),
      m_rightList(std::move(rightList)),
      m_renamesList(std::move(renamesList)) {}

VQLRemoteQuery::VQLRemoteQuery(VQLPosition position, std::wstring name, std::vector<usrprops> schema,
                               usrprops remoteProperties, VQLIdentifierSet scanColumns, VQLColumnMap columnMap)
    : VQLQuery(position),
      m_name(std::move(name)),
      m_schema(std::move(schema)),
      m_remoteProperties(std::move(remoteProperties)),
      m_scanColumns(std::move(scanColumns)),
      m_columnMap(std::move(columnMap)) {}

void VQLTableQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitTable(*this);
}
void VQLDomainQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitDomain(*this);
}
void VQLTextQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitText(*this);
}
void VQLSelectQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitSelect(*this);
}
void VQLProjectQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitProject(*this);
}
void VQLRestrictQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitRestrict(*this);
}
void VQLPivotQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitPivot(*this);
}
void VQLAggregateQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitAggregate(*this);
}
void VQLOrderQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitOrder(*this);
}
void VQLTopQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitTop(*this);
}
void VQLJoinQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitJoin(*this);
}
void VQLIndexTableQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitIndexTable(*this);
}
void VQLIndexJoinQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitIndexJoin(*this);
}
void VQLExchangeQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitExchange(*this);
}
void VQLAppendQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitAppend(*this);
}
void VQLRemoteQuery::Accept(VQLQueryVisitor& visitor) {
    visitor.VisitRemoteQuery(*this);
}

}  // namespace qve
