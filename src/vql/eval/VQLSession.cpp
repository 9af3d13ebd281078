#include "vql/eval/VQLSession.h"

#include "algebra/DataFlow.h"
#include "algebra/FlowTable.h"
#include "commands/CheckDatabase.h"
#include "commands/ConnectOperator.h"
#include "commands/PackageDatabase.h"
#include "metrics/Scope.h"
#include "os/Path.h"
#include "os/Timer.h"
#include "storage/DatabaseFamily.h"
#include "storage/SimpleDatabase.h"
#include "system/QuillonException.h"
#include "system/VQLException.h"
#include "vql/eval/ExecMessage.h"
#include "vql/eval/VQLCommandArguments.h"
#include "vql/eval/VQLQueryEvaluator.h"
#include "vql/eval/status.h"
#include "vql/syntax/VQLParser.h"

namespace qve {
namespace {

constexpr unsigned eval_page_size = 1024;

[[noreturn]] void RaiseBadInput(RefCntPtr<VQLNode>) {
    throw VQLException(status::VQLQueryEvaluator_BadInput, L"bad input");
}

}  // namespace

VQLSession::VQLSession(DatabaseFamily& databases) : m_databases(databases) {}

VQLSession::~VQLSession() = default;

void VQLSession::Message(const std::wstring&) {}

void VQLSession::Configure(const usrprops& properties) {
    if (properties.has(usrpropkey::encodings)) {
        VQLQueryEvaluator::SetDefaultEncodings(properties.is_true(usrpropkey::encodings));
    }
    if (const std::wstring* path = properties.get(usrpropkey::database_access)) m_databases.SetAccessPath(*path);
}

const std::wstring& VQLSession::GetDatabaseAccessPath() const {
    return m_databases.GetAccessPath();
}

void VQLSession::SetDatabaseAccessPath(const std::wstring& path) {
    m_databases.SetAccessPath(path);
}

RefCntPtr<Namespace> VQLSession::Prepare(const std::wstring& text) {
    const RefCntPtr<VQLNode> node = VQLParser::ParseAndReturnFirstNode(m_symbols, text.c_str(), true, RaiseBadInput);
    if (!node) return nullptr;
    if (RefCntPtr<Namespace> plan = Exec(node)) return plan;
    if (!m_databases.GetDefaultDatabase()) {
        throw VQLException(status::VQLSession_NeedsDatabase, L"must select a database");
    }
    return VQLQueryEvaluator(m_databases, m_symbols)(node);
}

RefCntPtr<Table> VQLSession::Eval(const std::wstring& text, EvalTimers& timers) {
    Metrics::Scope scope("VQLSession_Eval");
    const Timer timer(true);
    struct Finish {
        EvalTimers& timers;
        const Timer& timer;
        ~Finish() {
            timers.elapse = timer.ElapsedSec();
            timers.execute = timers.elapse - timers.compile;
        }
    } finish{timers, timer};

    RefCntPtr<Namespace> plan;
    {
        Metrics::Scope compile("compile");
        plan = Prepare(text);
        timers.compile = timer.ElapsedSec();
    }
    if (!plan) return nullptr;
    Metrics::Scope execute("execute");
    const RefCntPtr<Namespace> result = plan->Execute(Namespace::s_blockLength);
    if (!result) {
        ExecMessage message([this](const std::wstring& said) { Message(said); });
        plan->Accept(message);
        return nullptr;
    }
    RefCntPtr<Table> table = DynamicPtrCast<Table>(result);
    if (!table) table = MakeRef<FlowTable>(StaticPtrCast<DataFlow>(result));
    table->Build(eval_page_size);
    return table;
}

VQLSession::Handler VQLSession::FindCommand(const RefCntPtr<VQLNode>& node) {
    static const Handlers commands{
        {L"check", &VQLSession::ExecCheck},
        {L"connect", &VQLSession::ExecConnect},
        {L"create", &VQLSession::ExecCreate},
        {L"drop", &VQLSession::ExecDrop},
        {L"insert", &VQLSession::ExecInsert},
        {L"package", &VQLSession::ExecPackage},
        {L"unpackage", &VQLSession::ExecUnpackage},
        {L"show", &VQLSession::ExecShow},
        {L"describe", &VQLSession::ExecDescribe},
        {L"explain", &VQLSession::ExecExplain},
        {L"sort", &VQLSession::ExecNotSupported},
        {L"pivot-table", &VQLSession::ExecPivot},
        {L"alter", &VQLSession::ExecNotSupported},
        {L"replace", &VQLSession::ExecNotSupported},
        {L"settings", &VQLSession::ExecSettingsCommand},
        {L"queryband", &VQLSession::ExecQuerybandCommand},
    };
    const auto* list = dynamic_cast<const VQLListNode*>(node.get());
    if (!list) return nullptr;
    const std::wstring* word = VQLCommandArguments(list->GetNodes()).Symbol(0);
    const auto command = word ? commands.find(*word) : commands.end();
    return command == commands.end() ? nullptr : command->second;
}

RefCntPtr<Namespace> VQLSession::Exec(const RefCntPtr<VQLNode>& node) {
    const Handler command = FindCommand(node);
    if (!command) return nullptr;
    return (this->*command)(VQLCommandArguments(static_cast<const VQLListNode&>(*node).GetNodes()));
}

RefCntPtr<Namespace> VQLSession::ExecModifier(const VQLCommandArguments& args, const Handlers& handlers) {
    if (args.size() < 2) args.Raise(1, L"Too few arguments");
    const std::wstring* modifier = args.Symbol(1);
    if (!modifier) args.Raise(1, L"Missing modifier");
    const auto handler = handlers.find(*modifier);
    if (handler == handlers.end()) args.Raise(2, L"Unknown modifier");
    return (this->*handler->second)(args);
}

RefCntPtr<Namespace> VQLSession::ExecNotSupported(const VQLCommandArguments& args) {
    args.Raise(1, L"not supported yet");
}

RefCntPtr<Namespace> VQLSession::ExecNotSupportedModifier(const VQLCommandArguments& args) {
    args.Raise(2, L"not supported yet");
}

RefCntPtr<Namespace> VQLSession::ExecConnect(const VQLCommandArguments& args) {
    if (args.size() == 2 && args.Symbol(1) && *args.Symbol(1) == L"null") {
        SelectDatabase(nullptr);
        Message(L"Database closed.");
        return MakeRef<ConnectOperator>();
    }
    if (args.size() != 2 || !dynamic_cast<const VQLLiteralNode*>(args[1].get())) {
        throw VQLException(status::VQLSession_ConnectArguments, L"bad arguments");
    }
    if (!args.String(1)) throw VQLException(status::VQLSession_ConnectLiteral, L"bad arguments");
    const std::wstring path = m_databases.ResolveDatabasePath(*args.String(1));
    if (!Path::exists(path)) throw QVE_RuntimeError(status::VQLSession_ConnectPath, "Path does not exist.");
    SelectDatabase(MakeRef<SimpleDatabase>(path));
    Message(path);
    return MakeRef<ConnectOperator>();
}

RefCntPtr<Namespace> VQLSession::ExecCheck(const VQLCommandArguments& args) {
    static const Handlers handlers{{L"database", &VQLSession::CheckDatabaseCommand}};
    return ExecModifier(args, handlers);
}

RefCntPtr<Namespace> VQLSession::CheckDatabaseCommand(const VQLCommandArguments& args) {
    const std::wstring path = ResolveDatabasePath(args, 2);
    CheckDatabase::Options options;
    for (size_t place = 3; place < args.size(); ++place) {
        const std::wstring* option = args.Symbol(place);
        if (!option) args.Raise(2, L"Missing option");
        if (*option == L"temp") {
            options.removeLeftovers = true;
        } else if (*option == L"salvage") {
            options.salvage = ResolveDatabasePath(args, ++place);
            if (Path::exists(options.salvage)) args.Raise(2, L"Path already exists.");
        } else {
            args.Raise(2, L"Unknown option: " + *option);
        }
    }
    return MakeRef<CheckDatabase>(path, std::move(options));
}

RefCntPtr<Namespace> VQLSession::ExecPackage(const VQLCommandArguments& args) {
    return ExecPackage2(true, args);
}

RefCntPtr<Namespace> VQLSession::ExecUnpackage(const VQLCommandArguments& args) {
    return ExecPackage2(false, args);
}

RefCntPtr<Namespace> VQLSession::ExecPackage2(bool packaging, const VQLCommandArguments& args) {
    const RefCntPtr<Database> database = m_databases.GetDefaultDatabase();
    if (!database) args.Raise(1, L"No current database");
    if (args.size() != 2) throw VQLException(status::VQLSession_PackageArguments, L"bad arguments");
    std::wstring path;
    if (!args.Symbol(1) || *args.Symbol(1) != L"in-place") {
        if (!args.Literal(1)) throw VQLException(status::VQLSession_PackageLiteral, L"bad arguments");
        if (!args.String(1)) throw VQLException(status::VQLSession_PackageString, L"bad arguments");
        path = m_databases.ResolveDatabasePath(*args.String(1));
        if (Path::exists(path)) args.Raise(1, L"Path already exists.");
    }
    return MakeRef<PackageDatabase>(database, packaging, path,
                                    [this](RefCntPtr<Database> converted) { SelectDatabase(std::move(converted)); });
}

void VQLSession::SelectDatabase(RefCntPtr<Database> database) {
    m_databases.ReplaceDatabase(std::wstring(), std::move(database));
}

RefCntPtr<Database> VQLSession::CurrentDatabase(const VQLCommandArguments& args) const {
    RefCntPtr<Database> database = m_databases.GetDefaultDatabase();
    if (!database) args.Raise(args.Symbol(1) ? 2 : 1, L"No current database");
    return database;
}

std::wstring VQLSession::ResolveDatabasePath(const VQLCommandArguments& args, size_t place) const {
    const std::wstring& text = args.PathText(place);
    try {
        return m_databases.ResolveDatabasePath(text);
    } catch (const VQLException& error) {  // says which command it was
        args.Raise(2, error.GetWhatW());
    }
}

}  // namespace qve
