#include "storage/Database.h"

#include "storage/DatabaseSchema.h"

namespace qve {

const std::wstring Database::systemSchema = L"SYS";
const std::wstring Database::tempSchema = L"TEMP";
const std::wstring Database::tableSchemas = L"SCHEMAS";
const std::wstring Database::tableSchemaProps = L"SCHEMAPROPS";
const std::wstring Database::tableTables = L"TABLES";
const std::wstring Database::tableTableProps = L"TABLEPROPS";
const std::wstring Database::tableColumns = L"COLUMNS";
const std::wstring Database::tableColumnProps = L"COLUMNPROPS";
const std::wstring Database::tableDual = L"DUAL";
const std::wstring Database::columnID = L"ID";
const std::wstring Database::columnParent = L"PARENT";
const std::wstring Database::columnName = L"NAME";
const std::wstring Database::columnKey = L"KEY";
const std::wstring Database::columnValue = L"VALUE";
const std::wstring Database::columnActive = L"ACTIVE";
const std::wstring Database::columnSep = L"_";
std::wstring Database::metadataCollate = L"binary";

Database::Database() = default;
Database::~Database() = default;

std::wstring Database::NameSystemColumn(const std::wstring& table, const std::wstring& column) {
    return table + columnSep + column;
}

DatabaseSchema* Database::GetSchema(const std::wstring& schema) {
    std::unique_ptr<DatabaseSchema> loaded = LoadSchema(schema);
    std::lock_guard lock(m_schemasMutex);
    // A handle that was given out stays, also when the schema was dropped and made again in between.
    return m_schemas.try_emplace(schema, std::move(loaded)).first->second.get();
}

}  // namespace qve
