// The session command "insert".

#include <unistd.h>

#include <algorithm>

#include "commands/Insert.h"
#include "os/Path.h"
#include "storage/Database.h"
#include "storage/DatabaseFamily.h"
#include "vql/eval/VQLCommandArguments.h"
#include "vql/eval/VQLSession.h"

namespace qve {

RefCntPtr<Namespace> VQLSession::ExecInsert(const VQLCommandArguments& args) {
    const RefCntPtr<Database> database = CurrentDatabase(args);
    const VQLIdentifier* name = args.Identifier(1);
    if (!name) args.Raise(1, L"Missing table name");
    if (name->GetComponents().size() != 2) args.Raise(1, L"Identifier is not a table name");
    const std::wstring& schema = name->GetComponents()[0].AsString();
    const std::wstring& table = name->GetComponents()[1].AsString();
    if (!database->HasSchema(schema)) args.Raise(1, L"Schema does not exist");
    const std::vector<std::wstring> tables = database->GetTableNames(schema);
    if (std::find(tables.begin(), tables.end(), table) == tables.end()) args.Raise(1, L"Table does not exist");

    const auto* list = args.List(2);
    if (!list) args.Raise(1, L"Missing column list");
    const std::vector<std::wstring> known = database->GetColumnNames(table, schema);
    const VQLCommandArguments given(*list);
    std::vector<std::wstring> columns;
    for (size_t place = 0; place < given.size(); ++place) {
        const VQLIdentifier* column = given.Identifier(place);
        if (!column) args.Raise(1, L"Invalid column name");
        if (column->GetComponents().size() != 1) args.Raise(1, L"Column name is qualified");
        columns.push_back(column->GetComponents().front().AsString());
        const std::wstring& added = columns.back();
        if (std::find(known.begin(), known.end(), added) == known.end()) {
            args.Raise(1, L"Unknown column name: " + added);
        }
        if (std::find(columns.begin(), columns.end() - 1, added) != columns.end() - 1) {
            args.Raise(1, L"Column name stands twice: " + added);
        }
    }

    if (args.size() < 4) args.Raise(1, L"Missing path");
    if (!args.String(3)) args.Raise(1, L"Path is not a string");
    if (args.size() > 4) args.Raise(1, L"Too many arguments");
    const std::wstring path = m_databases.ResolveDataFilePath(*args.String(3));
    if (!Path::isfile(path)) args.Raise(1, L"File not found: " + path);
    if (!Path::access(path, R_OK)) args.Raise(1, L"Unable to open file: " + path);
    return MakeRef<Insert>(database, schema, table, std::move(columns), path);
}

}  // namespace qve
