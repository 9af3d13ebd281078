// The session command "create".

#include "commands/CreateColumn.h"
#include "commands/CreateDatabase.h"
#include "commands/CreateFolder.h"
#include "commands/CreateSchema.h"
#include "commands/CreateTable.h"
#include "commands/CreateTableFromFlow.h"
#include "os/OS.h"
#include "os/Path.h"
#include "os/WorkFolder.h"
#include "storage/SimpleDatabase.h"
#include "types/complete_type.h"
#include "vql/eval/VQLCommandArguments.h"
#include "vql/eval/VQLQueryEvaluator.h"
#include "vql/eval/VQLSession.h"
#include "vql/eval/status.h"
#include "vql/syntax/VQLPropertyListParser.h"

namespace qve {
namespace {

// Makes a database beside its place and moves it there, so that the place holds a whole database or nothing.
RefCntPtr<Database> MakeDatabase(const std::wstring& path) {
    const std::wstring parent = Path::split(path).first;
    const WorkFolder folder(parent);
    const std::wstring made = Path::join(folder.GetPath(), L"db");
    MakeRef<SimpleDatabase>(made)->CreateDatabase();
    OS::rename(made, path);
    OS::sync(parent);
    return MakeRef<SimpleDatabase>(path);
}

// One column of a definition list: ([name] ((key value) ...)).
std::pair<std::wstring, usrprops> ReadColumn(const VQLCommandArguments& args, const RefCntPtr<VQLNode>& node) {
    const auto* list = dynamic_cast<const VQLListNode*>(node.get());
    if (!list) args.Raise(2, L"Missing column definition");
    const VQLCommandArguments column(list->GetNodes());
    const VQLIdentifier* name = column.Identifier(0);
    if (!name) args.Raise(2, L"Missing column name");
    if (name->GetComponents().size() != 1) args.Raise(2, L"Identifier is not a column name");
    if (column.size() != 2) args.Raise(2, L"Missing column definition");
    const usrprops given = ParseVQLPropertyList(column[1], status::VQLSession_ColumnDefinition);
    usrprops properties = given;
    properties += complete_type(given);
    if (!properties.is_true(usrpropkey::fixed)) properties.set(usrpropkey::compression, L"heap");
    return {name->GetComponents().front().AsString(), std::move(properties)};
}

}  // namespace

RefCntPtr<Namespace> VQLSession::ExecCreate(const VQLCommandArguments& args) {
    static const Handlers handlers{
        {L"database", &VQLSession::CreateDatabaseCommand},
        {L"schema", &VQLSession::CreateSchemaCommand},
        {L"table", &VQLSession::CreateTableCommand},
        {L"table-from-query", &VQLSession::CreateTableFromQueryCommand},
        {L"column", &VQLSession::CreateColumnCommand},
        {L"folder", &VQLSession::CreateFolderCommand},
    };
    return ExecModifier(args, handlers);
}

RefCntPtr<Namespace> VQLSession::CreateDatabaseCommand(const VQLCommandArguments& args) {
    args.CheckSize(3);
    const std::wstring path = ResolveDatabasePath(args, 2);
    if (Path::exists(path)) args.Raise(2, L"Path already exists.");
    if (!Path::isdir(Path::split(path).first)) {
        args.Raise(2, L"VQLSession::ExecError: database path does not exist.");
    }
    RefCntPtr<Database> database = MakeDatabase(path);
    SelectDatabase(database);
    return MakeRef<CreateDatabase>(database);
}

RefCntPtr<Namespace> VQLSession::CreateSchemaCommand(const VQLCommandArguments& args) {
    const RefCntPtr<Database> database = CurrentDatabase(args);
    const auto name = args.Name(2, 1, L"Missing schema name", L"Identifier is not a schema name");
    args.CheckSize(3);
    return MakeRef<CreateSchema>(database, name[0]);
}

RefCntPtr<Namespace> VQLSession::CreateTableCommand(const VQLCommandArguments& args) {
    const RefCntPtr<Database> database = CurrentDatabase(args);
    const auto name = args.Name(2, 2, L"Missing table name", L"Identifier is not a table name");
    if (!database->HasSchema(name[0])) args.Raise(2, L"Schema does not exist");
    args.CheckSize(4);
    std::vector<CreateTable::ColumnDefinition> columns;
    if (args.size() == 4) {
        const auto* definitions = args.List(3);
        if (!definitions) args.Raise(2, L"Missing column definition");
        for (const auto& definition : *definitions) columns.push_back(ReadColumn(args, definition));
    }
    return MakeRef<CreateTable>(database, name[0], name[1], std::move(columns));
}

RefCntPtr<Namespace> VQLSession::CreateTableFromQueryCommand(const VQLCommandArguments& args) {
    if (args.size() != 4) args.Raise(2, L"Wrong number of arguments");
    const RefCntPtr<Database> database = CurrentDatabase(args);
    const auto name = args.Name(2, 2, L"Missing table name", L"Identifier is not a table name");
    if (!database->HasSchema(name[0])) args.Raise(2, L"Schema does not exist");
    const RefCntPtr<Namespace> plan = VQLQueryEvaluator(m_databases, m_symbols)(args[3]);
    return MakeRef<CreateTableFromFlow>(database, name[0], name[1], plan);
}

RefCntPtr<Namespace> VQLSession::CreateColumnCommand(const VQLCommandArguments& args) {
    const RefCntPtr<Database> database = CurrentDatabase(args);
    const auto name = args.Name(2, 3, L"Missing column name", L"Identifier is not a column name");
    if (!args.List(3)) args.Raise(2, L"Missing column definition");
    args.CheckSize(4);
    usrprops properties = ParseVQLPropertyList(args[3], status::VQLSession_ColumnDefinition);
    RefCntPtr<Namespace> plan;
    if (properties.has(CreateColumn::propComputedBy)) {
        // The names are checked first: they become part of a query.
        MakeRef<CreateColumn>(database, name[0], name[1], name[2], properties);
        plan = VQLQueryEvaluator(m_databases,
                                 m_symbols)(CreateColumn::BuildComputedByQuery(name[0], name[1], name[2], properties));
    }
    return MakeRef<CreateColumn>(database, name[0], name[1], name[2], std::move(properties), std::move(plan));
}

RefCntPtr<Namespace> VQLSession::CreateFolderCommand(const VQLCommandArguments& args) {
    const std::wstring path = ResolveDatabasePath(args, 2);
    const auto options = args.Options(3, {L"parents"});
    return MakeRef<CreateFolder>(path, options.count(L"parents") != 0);
}

}  // namespace qve
