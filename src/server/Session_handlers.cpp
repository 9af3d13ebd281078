#include <utility>

#include "metrics/Scope.h"
#include "server/Answer.h"
#include "server/Rowset.h"
#include "server/Session.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/protocol/QVE_OutputIterator.h"
#include "server/protocol/QVE_ValueArray.h"
#include "server/status.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"

namespace qve::Server {

/// Shows, for its life, which statement the session's worker is on.
class Session::Running {
public:
    Running(Session& session, RefCntPtr<Statement> statement) : m_session(session) { Set(std::move(statement)); }
    ~Running() { Set(nullptr); }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

private:
    void Set(RefCntPtr<Statement> statement) {
        // What was there is let go outside the lock.
        std::lock_guard lock(m_session.m_statementsMutex);
        m_session.m_running.swap(statement);
    }
    Session& m_session;
};

// A database that is converted in place is another then, also when the statement fails at the end.
RefCntPtr<Rowset> Session::Execute(Statement& statement) {
    RefCntPtr<Rowset> rowset;
    try {
        rowset = statement.Execute();
    } catch (...) {
        DatabaseUpdate(statement.GetDatabase());
        throw;
    }
    DatabaseUpdate(statement.GetDatabase());
    return rowset;
}

void Session::QueryExecute(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::QueryExecute");
    const RefCntPtr<Statement> statement = MakeStatement();
    Answer(
        reply,
        [&](QVE_OutputIterator& out) {
            const std::wstring text = widen(in.ReadString());
            LogEntry() << "Session" << m_guid << ": QueryExecute:" << text;
            ReportQuery(text);
            RefreshSessionSchema();
            const Running running(*this, statement);
            statement->Prepare(text);
            DatabaseUpdate(statement->GetDatabase());
            const RefCntPtr<Rowset> rowset = Execute(*statement);
            const std::uint64_t guid = WriteRowset(rowset, statement, out);
            LogEntry() << "Session" << m_guid << ": QueryExecute: OK rowset_guid=" << guid
                       << " n_columns=" << (rowset ? rowset->GetColumnCount() : 0)
                       << ProcessRuntimeQueryStats(statement->GetTimers());
        },
        [&](const char* text) {
            LogEntry() << "Session" << m_guid << ": QueryExecute: FAILED, error=" << text
                       << ProcessRuntimeQueryStats(statement->GetTimers());
        });
    scope.NameValue("compile", statement->GetTimers().compile);
    scope.NameValue("execute", statement->GetTimers().execute);
    scope.NameValue("elapse", statement->GetTimers().elapse);
}

void Session::StatementOpen(QVE_InputIterator&, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::StatementOpen");
    Answer(reply, [&](QVE_OutputIterator& out) {
        const std::uint64_t guid = AllocateGuid();
        LogEntry() << "Session" << m_guid << ": StatementOpen: stmt_guid=" << guid;
        RefCntPtr<Statement> statement = MakeStatement();
        {
            std::lock_guard lock(m_statementsMutex);
            m_statements.emplace(guid, std::move(statement));
        }
        out.WriteGuid(m_guid);
        out.WriteGuid(guid);
    });
}

void Session::StatementPrepare(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::StatementPrepare");
    CompileStatement(in, reply, scope, "StatementPrepare", status::Session_StatementPrepare, &Statement::Prepare);
}

void Session::StatementPlan(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::StatementPlan");
    CompileStatement(in, reply, scope, "StatementPlan", status::Session_StatementPlan, &Statement::Plan);
}

void Session::CompileStatement(QVE_InputIterator& in, QVE_Message& reply, const Metrics::Scope& scope,
                               const char* handler, int badSession, void (Statement::*compile)(const std::wstring&)) {
    Answer(
        reply,
        [&](QVE_OutputIterator&) {
            const std::uint64_t guid = ReadStatementGuid(in, handler, badSession);
            const std::wstring text = widen(in.ReadString());
            scope.NameValue("statement", guid);
            LogEntry() << "Session" << m_guid << ": " << handler << ": stmt_guid=" << guid << " " << text;
            ReportQuery(text);
            RefreshSessionSchema();
            const RefCntPtr<Statement> statement = GetStatement(guid);
            (statement.get()->*compile)(text);
            DatabaseUpdate(statement->GetDatabase());
            LogEntry() << "Session" << m_guid << ": " << handler << ": OK stmt_guid=" << guid;
        },
        [&](const char* text) { LogEntry() << "Session" << m_guid << ": " << handler << ": FAILED, error=" << text; });
}

void Session::StatementExecute(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::StatementExecute");
    RefCntPtr<Statement> statement;
    const auto timers = [&] { return statement ? statement->GetTimers() : Statement::Timers(); };
    Answer(
        reply,
        [&](QVE_OutputIterator& out) {
            const std::uint64_t guid = ReadStatementGuid(in, "StatementExecute", status::Session_StatementExecute);
            scope.NameValue("statement", guid);
            LogEntry() << "Session" << m_guid << ": StatementExecute: stmt_guid=" << guid;
            statement = GetStatement(guid);
            const Running running(*this, statement);
            const RefCntPtr<Rowset> rowset = Execute(*statement);
            WriteRowset(rowset, statement, out);
            LogEntry() << "Session" << m_guid << ": StatementExecute: OK" << ProcessRuntimeQueryStats(timers());
        },
        [&](const char* text) {
            LogEntry() << "Session" << m_guid << ": StatementExecute: FAILED, error=" << text
                       << ProcessRuntimeQueryStats(timers());
        });
    scope.NameValue("compile", timers().compile);
    scope.NameValue("execute", timers().execute);
    scope.NameValue("elapse", timers().elapse);
}

// On the receive thread of the connection, beside a request that runs.
void Session::StatementCancel(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::StatementCancel");
    Answer(reply, [&](QVE_OutputIterator&) {
        const std::uint64_t guid = ReadStatementGuid(in, "StatementCancel", status::Session_StatementCancel);
        LogEntry() << "Session" << m_guid << ": StatementCancel: stmt_guid=" << guid;
        GetStatement(guid)->Cancel();
        LogEntry() << "Session" << m_guid << ": StatementCancel: OK stmt_guid=" << guid;
    });
}

void Session::StatementEstimateProgress(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::StatementEstimateProgress");
    Answer(reply, [&](QVE_OutputIterator& out) {
        const std::uint64_t guid =
            ReadStatementGuid(in, "StatementEstimateProgress", status::Session_StatementEstimateProgress);
        const Statement::Progress progress = GetStatement(guid)->EstimateProgress();
        out.WriteU64(progress.first);
        out.WriteU64(progress.last);
        out.WriteU64(progress.done);
        out.WriteU64(progress.total);
    });
}

void Session::StatementClose(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::StatementClose");
    Answer(reply, [&](QVE_OutputIterator&) {
        const std::uint64_t guid = ReadStatementGuid(in, "StatementClose", status::Session_StatementClose);
        LogEntry() << "Session" << m_guid << ": StatementClose: stmt_guid=" << guid;
        const RefCntPtr<Statement> closed = GetStatement(guid);
        std::lock_guard lock(m_statementsMutex);
        m_statements.erase(guid);
    });
}

void Session::RowsetGetProperties(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::RowsetGetProperties");
    Answer(reply, [&](QVE_OutputIterator& out) {
        const std::uint64_t guid = in.ReadGuid();
        LogEntry() << "Session" << m_guid << ": RowsetGetProperties: rowset_guid=" << guid;
        out.WriteProperties(GetRowset(guid).rowset->GetProperties());
    });
}

void Session::RowsetGetValues(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::RowsetGetValues");
    Answer(reply, [&](QVE_OutputIterator& out) {
        const std::uint64_t guid = in.ReadGuid();
        LogEntry() << "Session" << m_guid << ": RowsetGetValues: rowset_guid=" << guid;
        const OpenRowset& open = GetRowset(guid);
        const Running running(*this, open.statement);
        // Room for the count, which is known at the end; the values follow it in the same message.
        const std::size_t countOffset = reply.size();
        out.WriteU32(0);
        QVE_ValueArray values;
        values.SetPrefix(reply);
        open.rowset->GetValues(values);
        reply.swap(values.GetMessage());
        QVE_OutputIterator::PatchU32(reply, countOffset, static_cast<std::uint32_t>(values.GetNumValues()));
        scope.NameValue("msgsize", reply.size());
    });
}

void Session::RowsetClose(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::RowsetClose");
    Answer(reply, [&](QVE_OutputIterator&) {
        const std::uint64_t guid = in.ReadGuid();
        LogEntry() << "Session" << m_guid << ": RowsetClose: rowset_guid=" << guid;
        GetRowset(guid);
        m_rowsets.erase(guid);
    });
}

}  // namespace qve::Server
