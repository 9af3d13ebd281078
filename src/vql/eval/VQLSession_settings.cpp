// The session commands "settings" and "queryband".

#include "commands/QuerybandCommand.h"
#include "commands/SettingsCommand.h"
#include "metrics/Context.h"
#include "storage/DatabaseFamily.h"
#include "system/VQLException.h"
#include "vql/eval/VQLCommandArguments.h"
#include "vql/eval/VQLSession.h"
#include "vql/eval/status.h"

namespace qve {

// (settings show), (settings show "name"), (settings set global "name" value)
RefCntPtr<Namespace> VQLSession::ExecSettingsCommand(const VQLCommandArguments& args) {
    if (args.size() < 2) args.Raise(1, L"Too few arguments");
    const std::wstring* action = args.Symbol(1);
    if (!action) args.Raise(1, L"Missing symbol, expect set or show");
    if (*action == SettingsCommand::actionShow) {
        args.CheckSize(3);
        if (args.size() > 2 && !args.String(2)) args.Raise(2, L"Missing string with the setting name");
        return MakeRef<SettingsCommand>(*action, std::wstring(), args.size() > 2 ? *args.String(2) : std::wstring(),
                                        VQLDataValue());
    }
    if (*action != SettingsCommand::actionSet) args.Raise(1, L"Incorrect modifier, expect set or show");
    args.CheckSize(5);
    const std::wstring* scope = args.Symbol(2);
    if (!scope || *scope != SettingsCommand::scopeGlobal) args.Raise(2, L"Expected \"global\" as symbol");
    if (!args.String(3)) args.Raise(2, L"Missing string with the setting name");
    const VQLDataValue* value = args.Literal(4);
    if (!value) args.Raise(2, L"Missing valid value to set");
    return MakeRef<SettingsCommand>(*action, *scope, *args.String(3), *value);
}

// (queryband set "key=value;...")
RefCntPtr<Namespace> VQLSession::ExecQuerybandCommand(const VQLCommandArguments& args) {
    if (args.size() < 3) args.Raise(1, L"Too few arguments");
    if (args.size() > 3) args.Raise(1, L"Too many arguments");
    const std::wstring* action = args.Symbol(1);
    if (!action) args.Raise(1, L"Missing symbol queryband");
    if (*action != L"set") args.Raise(1, L"Wrong symbol, expected queryband");
    const std::wstring* values = args.String(2);
    if (!values) args.Raise(2, L"Missing string with the queryband values");
    if (!m_databases.GetDefaultDatabase()) {
        throw VQLException(status::VQLSession_NeedsDatabase, L"must select a database");
    }
    Metrics::Attribute("queryband", *values, Metrics::Bits::Session);
    return MakeRef<QuerybandCommand>();
}

}  // namespace qve
