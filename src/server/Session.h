#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "server/Statement.h"
#include "server/protocol/QVE_Command.h"
#include "server/protocol/QVE_Message.h"
#include "storage/Database.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"
#include "types/usrprops.h"

namespace qve {
class QVE_InputIterator;
class QVE_OutputIterator;
}  // namespace qve

namespace qve::Metrics {
class Scope;
}

namespace qve::Server {

class Download;
class Insert;
class Rowset;
class SessionPool;
class Upload;

/// The state of one logical client: its current database, its statements and rowsets. Requests of a session run one
/// after the other; only StatementCancel runs beside another request.
class Session : public RefCntObject {
public:
    Session(std::uint64_t guid, RefCntPtr<SessionPool> pool, usrprops properties);
    ~Session() override;

    std::uint64_t GetGuid() const noexcept { return m_guid; }

    /// Carries out a request and writes its reply, errors included. What is no std::exception passes through.
    /// Throws QVE_RangeError (40423) for a command that is none, what the decoder throws for a body that is cut.
    void Dispatch(const QVE_Message& request, QVE_Message& reply);

    /// Takes the content of a request to the end of the session's own queue. True: nobody works on that queue, and the
    /// caller must see that someone calls Dequeue until it is empty.
    bool Enqueue(QVE_Message& request);
    /// Gives the next request; false when there is none, and the queue is nobody's again.
    bool Dequeue(QVE_Message& request);

    /// Cancels the statement that runs and all that are open. Any thread.
    void CancelAll();

private:
    using Reply = QVE_OutputIterator;
    /// A result, and the statement whose plan it pulls.
    struct OpenRowset {
        RefCntPtr<Rowset> rowset;
        RefCntPtr<Statement> statement;
    };
    class Running;
    class TableFactory;

    void Call(QVE_Command command, QVE_InputIterator& in, QVE_Message& reply);
    void QueryExecute(QVE_InputIterator& in, QVE_Message& reply);
    void StatementOpen(QVE_InputIterator& in, QVE_Message& reply);
    void StatementPrepare(QVE_InputIterator& in, QVE_Message& reply);
    void StatementPlan(QVE_InputIterator& in, QVE_Message& reply);
    void CompileStatement(QVE_InputIterator& in, QVE_Message& reply, const Metrics::Scope& scope, const char* handler,
                          int badSession, void (Statement::*compile)(const std::wstring&));
    void StatementExecute(QVE_InputIterator& in, QVE_Message& reply);
    void StatementCancel(QVE_InputIterator& in, QVE_Message& reply);
    void StatementEstimateProgress(QVE_InputIterator& in, QVE_Message& reply);
    void StatementClose(QVE_InputIterator& in, QVE_Message& reply);
    void RowsetGetProperties(QVE_InputIterator& in, QVE_Message& reply);
    void RowsetGetValues(QVE_InputIterator& in, QVE_Message& reply);
    void RowsetClose(QVE_InputIterator& in, QVE_Message& reply);
    void InsertOpen(QVE_InputIterator& in, QVE_Message& reply);
    void InsertGetColumnProperties(QVE_InputIterator& in, QVE_Message& reply);
    void InsertPutValues(QVE_InputIterator& in, QVE_Message& reply);
    void InsertCommit(QVE_InputIterator& in, QVE_Message& reply);
    void InsertClose(QVE_InputIterator& in, QVE_Message& reply);
    void DatabaseUploadOpen(QVE_InputIterator& in, QVE_Message& reply);
    void UploadSetSize(QVE_InputIterator& in, QVE_Message& reply);
    void UploadSend(QVE_InputIterator& in, QVE_Message& reply);
    void UploadCommit(QVE_InputIterator& in, QVE_Message& reply);
    void UploadClose(QVE_InputIterator& in, QVE_Message& reply);
    void DatabaseDownloadOpen(QVE_InputIterator& in, QVE_Message& reply);
    void DownloadRecv(QVE_InputIterator& in, QVE_Message& reply);
    void DownloadClose(QVE_InputIterator& in, QVE_Message& reply);

    std::uint64_t AllocateGuid() { return m_nextGuid++; }
    RefCntPtr<Statement> MakeStatement() const;
    RefCntPtr<Statement> GetStatement(std::uint64_t guid) const;
    const OpenRowset& GetRowset(std::uint64_t guid) const;
    const RefCntPtr<Insert>& GetInsert(std::uint64_t guid) const;
    Upload& GetUpload(std::uint64_t guid) const;
    Download& GetDownload(std::uint64_t guid) const;
    /// Where a file that a client names lies, within the access path.
    std::wstring ResolveTransferPath(const std::wstring& path, const wchar_t* command) const;
    /// The guid after the session's own in a request. Throws QVE_RuntimeError with the status for another session's.
    std::uint64_t ReadStatementGuid(QVE_InputIterator& in, const char* handler, int status) const;
    /// Keeps the rowset, which may be null, and writes the block that describes it. Gives its guid, 0 for null.
    std::uint64_t WriteRowset(RefCntPtr<Rowset> rowset, RefCntPtr<Statement> statement, Reply& out);
    /// Executes a statement, and follows it to its database.
    RefCntPtr<Rowset> Execute(Statement& statement);
    /// The session moves to a database, which may be null, if it is another one, and takes its schema ".SESSION" along.
    void DatabaseUpdate(const RefCntPtr<Database>& database);
    /// Gives the database the tables of this moment as its schema ".SESSION", before a statement that may read them.
    void RefreshSessionSchema();
    void DropSessionSchema();
    void ReportCommand(QVE_Command command);
    void ReportQuery(const std::wstring& text);
    /// The timings as the log shows them; adds them to the statistics.
    std::string ProcessRuntimeQueryStats(const Statement::Timers& timers) const;

    const std::uint64_t m_guid;
    const RefCntPtr<SessionPool> m_pool;
    const usrprops m_properties;
    std::uint64_t m_nextGuid = 1;
    const std::unique_ptr<TableFactory> m_tables;
    RefCntPtr<Database> m_database;
    std::map<std::uint64_t, OpenRowset> m_rowsets;
    std::map<std::uint64_t, RefCntPtr<Insert>> m_inserts;
    std::map<std::uint64_t, RefCntPtr<Upload>> m_uploads;
    std::map<std::uint64_t, RefCntPtr<Download>> m_downloads;

    mutable std::mutex m_statementsMutex;  // a cancel looks its statement up beside the running request
    std::unordered_map<std::uint64_t, RefCntPtr<Statement>> m_statements;
    RefCntPtr<Statement> m_running;  // what a worker executes or pulls, open or not

    std::mutex m_queueMutex;
    std::deque<QVE_Message> m_queue;
    bool m_isWorkedOn = false;
};

}  // namespace qve::Server
