#include "server/Session.h"

#include <fmt/format.h>

#include <utility>
#include <vector>

#include "commands/ShowVirtualTable.h"
#include "metrics/Scope.h"
#include "server/Download.h"
#include "server/Insert.h"
#include "server/Rowset.h"
#include "server/RuntimeQueryStatsCollector.h"
#include "server/SessionPool.h"
#include "server/SessionTableFactory.h"
#include "server/Upload.h"
#include "server/error_reply.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/protocol/QVE_OutputIterator.h"
#include "server/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"

namespace qve::Server {

Session::Session(std::uint64_t guid, RefCntPtr<SessionPool> pool, usrprops properties)
    : m_guid(guid),
      m_pool(std::move(pool)),
      m_properties(std::move(properties)),
      m_tables(std::make_unique<TableFactory>(*m_pool)) {}

Session::~Session() {
    DropSessionSchema();
}

void Session::Dispatch(const QVE_Message& request, QVE_Message& reply) {
    QVE_InputIterator in(request);
    const QVE_Command command = in.ReadCommand();
    ReportCommand(command);
    Metrics::Attribute("session", m_guid, Metrics::Bits::Session);
    try {
        Call(command, in, reply);
    } catch (...) {
        ReportCommand(QVE_Command::Idle);
        throw;
    }
    ReportCommand(QVE_Command::Idle);
}

void Session::Call(QVE_Command command, QVE_InputIterator& in, QVE_Message& reply) {
    switch (command) {
        case QVE_Command::QueryExecute:
            return QueryExecute(in, reply);
        case QVE_Command::StatementOpen:
            return StatementOpen(in, reply);
        case QVE_Command::StatementPrepare:
            return StatementPrepare(in, reply);
        case QVE_Command::StatementPlan:
            return StatementPlan(in, reply);
        case QVE_Command::StatementExecute:
            return StatementExecute(in, reply);
        case QVE_Command::StatementCancel:
            return StatementCancel(in, reply);
        case QVE_Command::StatementEstimateProgress:
            return StatementEstimateProgress(in, reply);
        case QVE_Command::StatementClose:
            return StatementClose(in, reply);
        case QVE_Command::RowsetGetValues:
            return RowsetGetValues(in, reply);
        case QVE_Command::RowsetClose:
            return RowsetClose(in, reply);
        case QVE_Command::RowsetGetProperties:
            return RowsetGetProperties(in, reply);
        case QVE_Command::InsertOpen:
            return InsertOpen(in, reply);
        case QVE_Command::InsertGetColumnProperties:
            return InsertGetColumnProperties(in, reply);
        case QVE_Command::InsertPutValues:
            return InsertPutValues(in, reply);
        case QVE_Command::InsertCommit:
            return InsertCommit(in, reply);
        case QVE_Command::InsertClose:
            return InsertClose(in, reply);
        case QVE_Command::DatabaseUploadOpen:
            return DatabaseUploadOpen(in, reply);
        case QVE_Command::UploadSetSize:
            return UploadSetSize(in, reply);
        case QVE_Command::UploadSend:
            return UploadSend(in, reply);
        case QVE_Command::UploadCommit:
            return UploadCommit(in, reply);
        case QVE_Command::UploadClose:
            return UploadClose(in, reply);
        case QVE_Command::DatabaseDownloadOpen:
            return DatabaseDownloadOpen(in, reply);
        case QVE_Command::DownloadRecv:
            return DownloadRecv(in, reply);
        case QVE_Command::DownloadClose:
            return DownloadClose(in, reply);
        default:
            throw QVE_RangeError(status::Session_Dispatch, "Protocol Error: invalid command");
    }
}

bool Session::Enqueue(QVE_Message& request) {
    std::lock_guard lock(m_queueMutex);
    m_queue.emplace_back().swap(request);
    return !std::exchange(m_isWorkedOn, true);
}

bool Session::Dequeue(QVE_Message& request) {
    std::lock_guard lock(m_queueMutex);
    if (m_queue.empty()) {
        m_isWorkedOn = false;
        return false;
    }
    request.swap(m_queue.front());
    m_queue.pop_front();
    return true;
}

void Session::CancelAll() {
    std::vector<RefCntPtr<Statement>> statements;
    {
        std::lock_guard lock(m_statementsMutex);
        for (const auto& [guid, statement] : m_statements) statements.push_back(statement);
        if (m_running) statements.push_back(m_running);
    }
    for (const RefCntPtr<Statement>& statement : statements) statement->Cancel();
}

RefCntPtr<Statement> Session::MakeStatement() const {
    auto statement = MakeRef<Statement>(m_database);
    statement->Configure(m_properties);
    return statement;
}

RefCntPtr<Statement> Session::GetStatement(std::uint64_t guid) const {
    std::lock_guard lock(m_statementsMutex);
    const auto found = m_statements.find(guid);
    if (found == m_statements.end()) throw QVE_RangeError(status::Session_GetStatement, "no such statement");
    return found->second;
}

const Session::OpenRowset& Session::GetRowset(std::uint64_t guid) const {
    const auto found = m_rowsets.find(guid);
    if (found == m_rowsets.end()) throw QVE_RangeError(status::Session_GetRowset, "no such rowset");
    return found->second;
}

const RefCntPtr<Insert>& Session::GetInsert(std::uint64_t guid) const {
    const auto found = m_inserts.find(guid);
    if (found == m_inserts.end()) throw QVE_RangeError(status::Session_GetInsert, "no such insert");
    return found->second;
}

std::uint64_t Session::ReadStatementGuid(QVE_InputIterator& in, const char* handler, int status) const {
    if (in.ReadGuid() != m_guid) throw QVE_RuntimeError(status, std::string(handler) + ": bad session id");
    return in.ReadGuid();
}

std::uint64_t Session::WriteRowset(RefCntPtr<Rowset> rowset, RefCntPtr<Statement> statement, Reply& out) {
    out.WriteU32(rowset ? 1 : 0);
    if (!rowset) return 0;
    const std::uint64_t guid = AllocateGuid();
    out.WriteGuid(guid);
    out.WriteU32(rowset->GetColumnCount());
    for (unsigned column = 0; column < rowset->GetColumnCount(); ++column) {
        out.WriteProperties(rowset->GetColumnProperties(column));
    }
    m_rowsets.emplace(guid, OpenRowset{std::move(rowset), std::move(statement)});
    return guid;
}

void Session::DatabaseUpdate(const RefCntPtr<Database>& database) {
    if (database == m_database) return;
    DropSessionSchema();
    m_database = database;
    RefreshSessionSchema();
    const std::wstring root = database ? database->GetRoot() : std::wstring();
    m_pool->UpdateSessionState(m_guid, [&](SessionState& state) { state.database = root; });
}

void Session::RefreshSessionSchema() {
    if (!m_database) return;
    // A new space, so that no stream of the former moment is taken for one of this.
    DropSessionSchema();
    m_tables->Refresh();
    m_database->AddTableSpace(ShowVirtualTable::schemaSession, MakeRef<MaterialisedTableSpace>(*m_tables));
}

void Session::DropSessionSchema() {
    if (m_database && m_database->HasTableSpace(ShowVirtualTable::schemaSession)) {
        m_database->RemoveTableSpace(ShowVirtualTable::schemaSession);
    }
}

void Session::ReportCommand(QVE_Command command) {
    m_pool->UpdateSessionState(m_guid, [command](SessionState& state) { state.command = command; });
}

void Session::ReportQuery(const std::wstring& text) {
    m_pool->UpdateSessionState(m_guid, [&](SessionState& state) { state.query = text; });
}

std::string Session::ProcessRuntimeQueryStats(const Statement::Timers& timers) const {
    m_pool->GetQueryStats().AddQueryStats(timers.compile, timers.execute);
    return fmt::format(", Elapsed time:{}s, Compilation time:{}s, Execution time:{}s\n", timers.elapse, timers.compile,
                       timers.execute);
}

}  // namespace qve::Server
