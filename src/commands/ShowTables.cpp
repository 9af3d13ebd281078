#include "commands/ShowTables.h"

#include "algebra/OperatorVisitor.h"
#include "commands/Listing.h"
#include "storage/Column.h"

namespace qve {

ShowTables::ShowTables(RefCntPtr<Database> database, std::wstring schema)
    : m_database(std::move(database)), m_schema(std::move(schema)) {}

void ShowTables::Accept(OperatorVisitor& visitor) {
    visitor.VisitShowTables(*this);
}

RefCntPtr<Namespace> ShowTables::Execute(unsigned) {
    std::vector<std::wstring> schemas{m_schema};
    if (m_schema.empty()) {
        schemas = m_database->GetSchemaNames();
        std::erase(schemas, Database::systemSchema);
    }
    std::vector<std::wstring> schemaNames, names;
    std::vector<long long> columnCounts, rows;
    for (const std::wstring& schema : schemas) {
        for (const std::wstring& table : m_database->GetTableNames(schema)) {
            const std::vector<std::wstring> columns = m_database->GetColumnNames(table, schema);
            schemaNames.push_back(schema);
            names.push_back(table);
            columnCounts.push_back(static_cast<long long>(columns.size()));
            const uint64_t count =
                columns.empty() ? 0 : m_database->LoadColumn(columns.front(), table, schema)->GetCount();
            rows.push_back(static_cast<long long>(count));
        }
    }
    Listing listing(L"TABLES");
    listing.AddTexts(L"SCHEMA", schemaNames);
    listing.AddTexts(L"NAME", names);
    listing.AddNumbers(L"COLUMNS", columnCounts);
    listing.AddNumbers(L"ROWS", rows);
    return listing.Finish();
}

}  // namespace qve
