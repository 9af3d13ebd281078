#include "commands/PivotTable.h"

#include <algorithm>

#include "commands/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "vql/syntax/VQLIdentifier.h"

namespace qve {

PivotTable::PivotTable(RefCntPtr<Database> database, std::wstring schema, std::wstring table, RefCntPtr<Namespace> plan)
    : CreateTableFromFlow(std::move(database), std::move(schema), std::move(table), std::move(plan)) {}

std::wstring PivotTable::BuildPivotQuery(const std::wstring& schema, const std::wstring& table, const std::wstring& key,
                                         const std::wstring& value, const std::vector<std::wstring>& values) {
    const auto quote = [](const std::wstring& name) { return VQLIdentifier::UnquotedName(name); };
    std::wstring members;
    for (const std::wstring& name : values) members += (members.empty() ? L"" : L" ") + quote(name);
    return L"(pivot (table " + quote(schema) + L"." + quote(table) + L") (" + quote(key) + L" (" + members + L")) ((" +
           quote(value) + L" (" + members + L"))))";
}

void PivotTable::CheckTable(const Database& database, const std::wstring& schema, const std::wstring& table) {
    if (!database.HasSchema(schema)) {
        throw QVE_RuntimeError(status::PivotTable_schema, "PivotTable: No such schema.: " + narrow(schema));
    }
    const std::vector<std::wstring> tables = database.GetTableNames(schema);
    if (std::find(tables.begin(), tables.end(), table) == tables.end()) {
        throw QVE_RuntimeError(status::PivotTable_table, "PivotTable: No such table.: " + narrow(table));
    }
}

void PivotTable::CheckName() const {
    CheckTable(*m_database, m_schema, m_name);
}

void PivotTable::MakeEmpty() {
    m_database->DropTable(m_name, m_schema, true, false);
    CreateTableFromFlow::MakeEmpty();
}

}  // namespace qve
