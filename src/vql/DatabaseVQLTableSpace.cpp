#include "vql/DatabaseVQLTableSpace.h"

#include "storage/Database.h"
#include "storage/DatabaseSchema.h"
#include "system/VQLException.h"
#include "vql/DescribeVQLTable.h"
#include "vql/status.h"

namespace qve {

namespace {

struct QualifiedName {
    const std::wstring& schema;
    const std::wstring& table;
};

QualifiedName Split(const VQLIdentifier& name) {
    if (name.GetComponents().size() != 2)
        throw VQLException(status::VQLTableSpace_BadIdentifier, L"bad identifier (" + name.AsString() + L")");
    return {name.GetComponents()[0].AsString(), name.GetComponents()[1].AsString()};
}

}  // namespace

DatabaseVQLTableSpace::DatabaseVQLTableSpace(SymbolDictionary& dictionary, RefCntPtr<Database> database)
    : m_dictionary(dictionary), m_database(std::move(database)) {}

DatabaseVQLTableSpace::~DatabaseVQLTableSpace() = default;

bool DatabaseVQLTableSpace::HasTable(const VQLIdentifier& name) const {
    const auto [schema, table] = Split(name);
    if (m_tables.count(name)) return true;
    return m_database->HasSchema(schema) && m_database->GetSchema(schema)->HasTable(table);
}

RefCntPtr<VQLTable> DatabaseVQLTableSpace::GetTable(const VQLIdentifier& name) const {
    const auto [schema, table] = Split(name);
    const auto known = m_tables.find(name);
    if (known != m_tables.end()) return known->second;
    if (!m_database->HasSchema(schema))
        throw VQLException(status::DatabaseVQLTableSpace_Schema, L"no such schema (" + schema + L")");
    const DatabaseSchema& catalog = *m_database->GetSchema(schema);
    if (!catalog.HasTable(table))
        throw VQLException(status::VQLTableSpace_NoSuchTable, L"no such table " + name.AsString());
    return m_tables[name] = DescribeVQLTable(name, catalog, table, m_dictionary);
}

}  // namespace qve
