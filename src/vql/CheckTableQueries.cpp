// The checks of the queries without input: tables and what is read like one.
#include <algorithm>

#include "vql/VQLDerivedFacts.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLQueries.h"
#include "vql/VQLQueryChecker.h"
#include "vql/VQLTableFacts.h"
#include "vql/status.h"

namespace qve {

namespace {

[[noreturn]] void RaiseName(std::wstring message, const VQLQuery& query) {
    throw VQLParseException(status::VQLQueryChecker_RaiseName, std::move(message), query.GetPosition());
}

/// A column of the output for one of a table. A compressed column remembers where its dictionary lies, as the column
/// may travel far from its table.
RefCntPtr<VQLColumn> MakeTableColumn(const VQLColumn& column, const VQLColumnMap& columnMap,
                                     const VQLIdentifier& tableName, const std::wstring& databasePath,
                                     SymbolDictionary& dictionary) {
    usrprops properties = column.GetProperties();
    if (properties.has(usrpropkey::compression)) {
        const VQLIdentifier source = VQLIdentifier::Join(tableName, column.GetName(), dictionary);
        properties.emplace(usrpropkey::dictionary_column_name, source.AsString());
        properties.emplace(usrpropkey::table_name, tableName.AsString());
        properties.emplace(usrpropkey::database_path, databasePath);
    }
    return MakeRef<VQLColumn>(columnMap.PartialMap(column.GetName()), column.GetDataType(), std::move(properties));
}

/// The columns of `table` that the query wants, under the names of the output.
RefCntPtr<VQLColumnSpace> ScanColumns(const VQLTable& table, const VQLIdentifierSet& scanColumns,
                                      const VQLColumnMap& columnMap, const std::wstring& databasePath,
                                      const VQLQuery& query, SymbolDictionary& dictionary) {
    const VQLColumnSpace& stored = *table.GetColumnSpace();
    VQLColumnSpace::Columns columns;
    const auto add = [&](const VQLColumn& column) {
        columns.push_back(MakeTableColumn(column, columnMap, table.GetName(), databasePath, dictionary));
    };
    for (const VQLIdentifier& wanted : scanColumns) {
        const VQLColumn* column = stored.FindColumn(columnMap.PartialRemap(wanted));
        if (!column) RaiseName(L"no such column " + wanted.AsString(), query);
        add(*column);
    }
    if (scanColumns.empty()) {
        // A column that is given the name of another takes its place.
        for (const RefCntPtr<VQLColumn>& column : stored.GetColumns())
            if (!columnMap.HasMapping(column->GetName())) add(*column);
        for (const auto& [from, to] : columnMap) {
            const VQLColumn* column = stored.FindColumn(from);
            if (!column) RaiseName(L"no such column " + from.AsString(), query);
            add(*column);
        }
    }
    return MakeRef<VQLColumnSpace>(std::move(columns));
}

/// The facts of a table under the names of the output.
VQLDerivedFacts ScanFacts(const VQLTable& table, const VQLColumnMap& columnMap, const VQLColumnSpace& output) {
    const VQLDerivedFacts facts = VQLTableFacts(*table.GetColumnSpace());
    if (columnMap.Empty()) return facts.Through(VQLDerivedFacts::Carriers(output));
    VQLBindings names;
    for (const RefCntPtr<VQLColumn>& column : table.GetColumnSpace()->GetColumns()) {
        const VQLIdentifier& outer = columnMap.PartialMap(column->GetName());
        if (!output.HasColumn(outer) || !(columnMap.PartialRemap(outer) == column->GetName())) continue;
        names.emplace_back(outer, MakeRef<VQLIdentifierExpression>(VQLPosition(), column->GetName()));
    }
    return facts.Through(VQLDerivedFacts::Carriers(names, false));
}

}  // namespace

void VQLQueryChecker::VisitTable(VQLTableQuery& query) {
    if (!m_family.HasTable(query)) RaiseName(L"no such table " + query.GetTableName().AsString(), query);
    const RefCntPtr<VQLTable> table = m_family.GetTable(query);
    const auto columns = ScanColumns(*table, query.GetScanColumns(), query.GetColumnMap(), query.GetDatabasePath(),
                                     query, GetSessionSymbols());
    Store(query, columns, ScanFacts(*table, query.GetColumnMap(), *columns));
}

void VQLQueryChecker::VisitDomain(VQLDomainQuery& query) {
    const VQLIdentifier& tableName = query.GetTableName();
    const VQLIdentifier& columnName = query.GetColumnName();
    if (!m_family.HasTable(query.GetDatabasePath(), tableName))
        RaiseName(L"no such table " + tableName.AsString(), query);
    const RefCntPtr<VQLTable> table = m_family.GetTable(query.GetDatabasePath(), tableName);
    const VQLColumn* column = table->GetColumnSpace()->FindColumn(columnName);
    if (!column) RaiseName(L"no such column " + columnName.AsString(), query);
    const std::wstring name = L"column " + columnName.AsString();
    if (!column->HasProperty(usrpropkey::compression))
        RaiseName(name + L" is not compressed, domain not available", query);
    const std::wstring& compression = column->GetProperty(usrpropkey::compression);
    if (compression != L"heap" && compression != L"array")
        RaiseName(name + L" compression not supported, domain not available", query);

    const VQLIdentifier& output = query.GetColumnMap().PartialMap(columnName);
    usrprops properties = column->GetProperties();
    for (const usrpropkey key : {usrpropkey::compression, usrpropkey::sort_position, usrpropkey::sort_sense,
                                 usrpropkey::ordered, usrpropkey::primary_key})
        properties.erase(key);
    properties.set(usrpropkey::unique, true);
    const std::wstring dictionaryTable = tableName.Tail().GetComponents().at(0).AsString() + L".DICT";
    properties.set(usrpropkey::table_name,
                   VQLIdentifier::Join(tableName.Head(), VQLIdentifier::Unquoted(dictionaryTable, GetSessionSymbols()),
                                       GetSessionSymbols())
                       .AsString());
    VQLDerivedFacts facts;
    facts.AddUniqueKey({output});
    Store(query,
          MakeRef<VQLColumnSpace>(
              VQLColumnSpace::Columns{MakeRef<VQLColumn>(output, column->GetDataType(), std::move(properties))}),
          std::move(facts));
}

void VQLQueryChecker::VisitText(VQLTextQuery& query) {
    const std::wstring space = VQLTableSpaceFamily::TextSpacePath(query);
    const VQLIdentifier name = VQLIdentifier::Unquoted(query.GetPath(), GetSessionSymbols());
    if (!m_family.HasTableSpace(space) || !m_family.HasTable(space, name))
        RaiseName(L"no such text file " + query.GetPath(), query);
    const RefCntPtr<VQLTable> table = m_family.GetTable(space, name);
    const auto columns =
        ScanColumns(*table, query.GetScanColumns(), query.GetColumnMap(), {}, query, GetSessionSymbols());
    Store(query, columns, ScanFacts(*table, query.GetColumnMap(), *columns));
}

void VQLQueryChecker::VisitIndexTable(VQLIndexTableQuery& query) {
    const VQLIdentifier& tableName = query.GetTableName();
    if (!m_family.HasTable(query.GetDatabasePath(), tableName))
        RaiseName(L"no such table " + tableName.AsString(), query);
    const RefCntPtr<VQLTable> table = m_family.GetTable(query.GetDatabasePath(), tableName);
    const VQLColumn* column = table->GetColumnSpace()->FindColumn(query.GetRLEColumnName());
    if (!column) RaiseName(L"no such column " + query.GetRLEColumnName().AsString(), query);
    const VQLColumnMap& columnMap = query.GetColumnMap();
    VQLColumnSpace::Columns columns{
        MakeTableColumn(*column, columnMap, tableName, query.GetDatabasePath(), GetSessionSymbols())};
    for (const VQLIdentifier* derived : {&query.GetStartColumnName(), &query.GetCountColumnName()})
        columns.push_back(MakeRef<VQLColumn>(columnMap.PartialMap(*derived), VQLDataType::integer));
    VQLDerivedFacts facts;
    facts.AddUniqueKey({columnMap.PartialMap(query.GetStartColumnName())});
    Store(query, MakeRef<VQLColumnSpace>(std::move(columns)), std::move(facts));
}

void VQLQueryChecker::VisitRemoteQuery(VQLRemoteQuery& query) {
    const VQLIdentifier name = VQLIdentifier::Quoted(query.GetName(), GetSessionSymbols());
    if (!m_family.HasTableSpace(query.GetName()) || !m_family.HasTable(query.GetName(), name))
        RaiseName(L"no such remote query " + query.GetName(), query);
    const RefCntPtr<VQLTable> table = m_family.GetTable(query.GetName(), name);
    Store(query, ScanColumns(*table, query.GetScanColumns(), query.GetColumnMap(), {}, query, GetSessionSymbols()), {});
}

}  // namespace qve
