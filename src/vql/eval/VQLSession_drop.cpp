// The session command "drop".

#include "commands/DropColumn.h"
#include "commands/DropDatabase.h"
#include "commands/DropFolder.h"
#include "commands/DropSchema.h"
#include "commands/DropTable.h"
#include "os/Path.h"
#include "storage/Database.h"
#include "vql/eval/VQLCommandArguments.h"
#include "vql/eval/VQLSession.h"

namespace qve {
namespace {

struct DropOptions {
    DropOptions(const VQLCommandArguments& args, size_t place) {
        const auto options = args.Options(place, {L"ifexists", L"cascade"});
        ifexists = options.count(L"ifexists") != 0;
        cascade = options.count(L"cascade") != 0;
    }
    bool ifexists;
    bool cascade;
};

}  // namespace

RefCntPtr<Namespace> VQLSession::ExecDrop(const VQLCommandArguments& args) {
    static const Handlers handlers{
        {L"database", &VQLSession::DropDatabaseCommand}, {L"schema", &VQLSession::DropSchemaCommand},
        {L"table", &VQLSession::DropTableCommand},       {L"column", &VQLSession::DropColumnCommand},
        {L"folder", &VQLSession::DropFolderCommand},
    };
    return ExecModifier(args, handlers);
}

RefCntPtr<Namespace> VQLSession::DropDatabaseCommand(const VQLCommandArguments& args) {
    const std::wstring path = ResolveDatabasePath(args, 2);
    const DropOptions options(args, 3);
    const std::wstring lostAndFound = Path::join(Path::split(path).first, L"lost_and_found");
    return MakeRef<DropDatabase>(path, options.ifexists, options.cascade, lostAndFound);
}

RefCntPtr<Namespace> VQLSession::DropSchemaCommand(const VQLCommandArguments& args) {
    const RefCntPtr<Database> database = CurrentDatabase(args);
    const auto name = args.Name(2, 1, L"Missing schema name", L"Identifier is not a schema name");
    const DropOptions options(args, 3);
    return MakeRef<DropSchema>(database, name[0], options.cascade, options.ifexists);
}

RefCntPtr<Namespace> VQLSession::DropTableCommand(const VQLCommandArguments& args) {
    const RefCntPtr<Database> database = CurrentDatabase(args);
    const auto name = args.Name(2, 2, L"Missing table name", L"Identifier is not a table name");
    const DropOptions options(args, 3);
    return MakeRef<DropTable>(database, name[0], name[1], options.cascade, options.ifexists);
}

RefCntPtr<Namespace> VQLSession::DropColumnCommand(const VQLCommandArguments& args) {
    const RefCntPtr<Database> database = CurrentDatabase(args);
    const auto name = args.Name(2, 3, L"Missing column name", L"Identifier is not a column name");
    const DropOptions options(args, 3);
    return MakeRef<DropColumn>(database, name[0], name[1], name[2], options.cascade, options.ifexists);
}

RefCntPtr<Namespace> VQLSession::DropFolderCommand(const VQLCommandArguments& args) {
    const std::wstring path = ResolveDatabasePath(args, 2);
    const auto options = args.Options(3, {L"parents", L"cascade"});
    return MakeRef<DropFolder>(path, (options.count(L"cascade") ? DropFolder::cascade : 0) |
                                         (options.count(L"parents") ? DropFolder::parents : 0));
}

}  // namespace qve
