// The session commands "show" and "describe".

#include "commands/DescribeTable.h"
#include "commands/ShowCollations.h"
#include "commands/ShowDatabase.h"
#include "commands/ShowDatabases.h"
#include "commands/ShowFolder.h"
#include "commands/ShowSchemas.h"
#include "commands/ShowTables.h"
#include "commands/ShowVirtualTable.h"
#include "storage/Database.h"
#include "vql/eval/VQLCommandArguments.h"
#include "vql/eval/VQLSession.h"

namespace qve {

RefCntPtr<Namespace> VQLSession::ExecShow(const VQLCommandArguments& args) {
    static const Handlers handlers{
        {L"collations", &VQLSession::ShowCollationsCommand},
        {L"database", &VQLSession::ShowDatabaseCommand},
        {L"databases", &VQLSession::ShowDatabasesCommand},
        {L"folder", &VQLSession::ShowFolderCommand},
        {L"runtimequerystats", &VQLSession::ShowRuntimeQueryStatsCommand},
        {L"schemas", &VQLSession::ShowSchemasCommand},
        {L"sessions", &VQLSession::ShowSessionsCommand},
        {L"tables", &VQLSession::ShowTablesCommand},
    };
    return ExecModifier(args, handlers);
}

RefCntPtr<Namespace> VQLSession::ShowCollationsCommand(const VQLCommandArguments& args) {
    args.CheckSize(2);
    return MakeRef<ShowCollations>();
}

RefCntPtr<Namespace> VQLSession::ShowDatabaseCommand(const VQLCommandArguments& args) {
    args.CheckSize(2);
    return MakeRef<ShowDatabase>(CurrentDatabase(args));
}

RefCntPtr<Namespace> VQLSession::ShowDatabasesCommand(const VQLCommandArguments& args) {
    const std::wstring path = ResolveDatabasePath(args, 2);
    const auto options = args.Options(3, {L"cascade"});
    return MakeRef<ShowDatabases>(path, options.count(L"cascade") != 0);
}

RefCntPtr<Namespace> VQLSession::ShowFolderCommand(const VQLCommandArguments& args) {
    const std::wstring path = ResolveDatabasePath(args, 2);
    unsigned options = 0;
    std::wstring pattern;
    for (size_t place = 3; place < args.size(); ++place) {
        const std::wstring* option = args.Symbol(place);
        if (!option) args.Raise(2, L"Expected symbol");
        if (*option == L"counts") {
            options |= ShowFolder::counts;
        } else if (*option == L"cascade") {
            options |= ShowFolder::cascade;
        } else if (*option == L"like") {
            if (++place >= args.size()) args.Raise(2, L"LIKE requires pattern");
            if (!args.String(place)) args.Raise(2, L"LIKE pattern is not a string");
            pattern = *args.String(place);
        } else {
            args.Raise(2, L"bad option");
        }
    }
    return MakeRef<ShowFolder>(path, pattern, options);
}

RefCntPtr<Namespace> VQLSession::ShowSchemasCommand(const VQLCommandArguments& args) {
    args.CheckSize(2);
    return MakeRef<ShowSchemas>(CurrentDatabase(args));
}

RefCntPtr<Namespace> VQLSession::ShowRuntimeQueryStatsCommand(const VQLCommandArguments& args) {
    args.CheckSize(2);
    return MakeRef<ShowVirtualTable>(CurrentDatabase(args), ShowVirtualTable::tableRuntimeQueryStats);
}

RefCntPtr<Namespace> VQLSession::ShowSessionsCommand(const VQLCommandArguments& args) {
    args.CheckSize(2);
    return MakeRef<ShowVirtualTable>(CurrentDatabase(args), ShowVirtualTable::tableSessions);
}

RefCntPtr<Namespace> VQLSession::ShowTablesCommand(const VQLCommandArguments& args) {
    args.CheckSize(3);
    const RefCntPtr<Database> database = CurrentDatabase(args);
    if (args.size() == 2) return MakeRef<ShowTables>(database, std::wstring());
    return MakeRef<ShowTables>(database, args.Name(2, 1, L"Missing schema name", L"Missing schema name")[0]);
}

RefCntPtr<Namespace> VQLSession::ExecDescribe(const VQLCommandArguments& args) {
    if (args.size() != 2) args.Raise(1, args.size() < 2 ? L"Too few arguments" : L"Too many arguments");
    const RefCntPtr<Database> database = CurrentDatabase(args);
    const VQLIdentifier* name = args.Identifier(1);
    if (!name) args.Raise(1, L"Missing table name");
    if (name->GetComponents().size() != 2) args.Raise(1, L"Identifier is not a table name");
    return MakeRef<DescribeTable>(database, name->GetComponents()[0].AsString(), name->GetComponents()[1].AsString());
}

}  // namespace qve
