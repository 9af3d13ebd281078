#include "commands/ShowDatabase.h"

#include "algebra/OperatorVisitor.h"
#include "commands/Listing.h"

namespace qve {

ShowDatabase::ShowDatabase(RefCntPtr<Database> database) : m_database(std::move(database)) {}

void ShowDatabase::Accept(OperatorVisitor& visitor) {
    visitor.VisitShowDatabase(*this);
}

RefCntPtr<Namespace> ShowDatabase::Execute(unsigned) {
    std::vector<std::wstring> keys, values;
    const auto add = [&](const std::wstring& key, const std::wstring& value) {
        keys.push_back(key);
        values.push_back(value);
    };
    // The catalog's own schema and the temporary one say nothing about this database.
    size_t schemas = 0, tables = 0, columns = 0;
    for (const std::wstring& schema : m_database->GetSchemaNames()) {
        if (schema == Database::systemSchema || schema == Database::tempSchema) continue;
        ++schemas;
        for (const std::wstring& table : m_database->GetTableNames(schema)) {
            ++tables;
            columns += m_database->GetColumnNames(table, schema).size();
        }
    }
    add(L"path", m_database->GetRoot());
    add(L"packaged", m_database->IsPackaged() ? L"true" : L"false");
    add(L"schemas", std::to_wstring(schemas));
    add(L"tables", std::to_wstring(tables));
    add(L"columns", std::to_wstring(columns));
    for (const auto& [key, value] : OrderedUserProperties(m_database->GetProperties())) {
        add(UsrPropKey_ToString(key), value);
    }
    Listing listing(L"DATABASE");
    listing.AddTexts(L"KEY", keys);
    listing.AddTexts(L"VALUE", values);
    return listing.Finish();
}

}  // namespace qve
