#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "system/RefCntPtr.h"
#include "types/usrprops.h"
#include "vql/syntax/SymbolDictionary.h"
#include "vql/syntax/VQLNode.h"

namespace qve {

class Database;
class DatabaseFamily;
class Namespace;
class Table;
class VQLCommandArguments;

/// The entry point of the language: makes a plan of one statement, which is a session command or a query. Made anew for
/// each statement, and must outlive its plan. One thread at a time.
class VQLSession {
public:
    /// Seconds.
    struct EvalTimers {
        double compile = 0;
        double execute = 0;
        double elapse = 0;
    };

    explicit VQLSession(DatabaseFamily& databases);
    virtual ~VQLSession();
    VQLSession(const VQLSession&) = delete;
    VQLSession& operator=(const VQLSession&) = delete;

    /// Receives what a finished command has to say.
    virtual void Message(const std::wstring& text);

    /// Takes the properties `encodings` and `database-access`; ignores all others.
    void Configure(const usrprops& properties);
    /// The directory below which databases must lie; empty for anywhere.
    const std::wstring& GetDatabaseAccessPath() const;
    void SetDatabaseAccessPath(const std::wstring& path);

    /// The plan of a statement, null for an empty text. Throws VQLException 48048 "must select a database" for a query
    /// when there is none, and whatever parsing, checking and compiling throw.
    RefCntPtr<Namespace> Prepare(const std::wstring& text);
    /// The plan that a text in the language of plans stands for; null for an empty text. Throws VQLException 48046
    /// "must select a database" when there is none, and what NamespaceBuilder throws.
    RefCntPtr<Namespace> Plan(const std::wstring& text);
    /// Runs a statement to its end: the built table of its rows, or null.
    RefCntPtr<Table> Eval(const std::wstring& text, EvalTimers& timers);
    /// The operator of a session command; null when the node is none.
    RefCntPtr<Namespace> Exec(const RefCntPtr<VQLNode>& node);

private:
    using Handler = RefCntPtr<Namespace> (VQLSession::*)(const VQLCommandArguments&);
    using Handlers = std::unordered_map<std::wstring, Handler>;

    /// Null when the node is no command.
    static Handler FindCommand(const RefCntPtr<VQLNode>& node);
    RefCntPtr<Namespace> ExecCheck(const VQLCommandArguments& args);
    RefCntPtr<Namespace> CheckDatabaseCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ExecConnect(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ExecCreate(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ExecDrop(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ExecInsert(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ExecPackage(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ExecUnpackage(const VQLCommandArguments& args);
    /// To a path, or in place with the word "in-place".
    RefCntPtr<Namespace> ExecPackage2(bool packaging, const VQLCommandArguments& args);
    RefCntPtr<Namespace> ExecPivot(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ExecShow(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ExecDescribe(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ExecExplain(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ExecSettingsCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ExecQuerybandCommand(const VQLCommandArguments& args);
    /// Commands that the language has and this server not yet.
    RefCntPtr<Namespace> ExecNotSupported(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ExecNotSupportedModifier(const VQLCommandArguments& args);
    /// Calls the handler of the second word.
    RefCntPtr<Namespace> ExecModifier(const VQLCommandArguments& args, const Handlers& handlers);

    RefCntPtr<Namespace> CreateDatabaseCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> CreateSchemaCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> CreateTableCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> CreateTableFromQueryCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> CreateColumnCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> CreateFolderCommand(const VQLCommandArguments& args);

    RefCntPtr<Namespace> DropDatabaseCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> DropSchemaCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> DropTableCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> DropColumnCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> DropFolderCommand(const VQLCommandArguments& args);

    RefCntPtr<Namespace> ShowCollationsCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ShowDatabaseCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ShowDatabasesCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ShowFolderCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ShowRuntimeQueryStatsCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ShowSchemasCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ShowSessionsCommand(const VQLCommandArguments& args);
    RefCntPtr<Namespace> ShowTablesCommand(const VQLCommandArguments& args);

    /// The current database; "No current database" when there is none.
    RefCntPtr<Database> CurrentDatabase(const VQLCommandArguments& args) const;
    /// The path that the string at `place` means, within the access path.
    std::wstring ResolveDatabasePath(const VQLCommandArguments& args, size_t place) const;
    void SelectDatabase(RefCntPtr<Database> database);

    DatabaseFamily& m_databases;
    SymbolDictionary m_symbols;
};

}  // namespace qve
