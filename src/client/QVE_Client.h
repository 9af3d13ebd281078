#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "server/protocol/QVE_Command.h"
#include "server/protocol/QVE_InterredValue.h"
#include "server/protocol/QVE_Value.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"
#include "system/TRecursiveMutex.h"

namespace qve {

class ClientConnection;
class QVE_ClientRowset;
class QVE_InputIterator;
class QVE_Message;
class QVE_OutputIterator;
class QVE_ValueArray;

/// One session on a server. Calls from several threads wait for each other; only StatementCancel and
/// StatementEstimateProgress overtake a call that is under way. Operations throw QVE_ServerError with the status and
/// texts of an error reply, QVE_Exception (40508) when there is no connection, (40509) when it fails, QVE_RuntimeError
/// (70003 to 70007) for replies that make no sense.
class QVE_Client : public RefCntObject {
public:
    QVE_Client();
    ~QVE_Client() override;

    /// Opens a connection of its own, and a session. Throws std::invalid_argument for a bad connection string.
    void Connect(const std::string& descriptor);
    /// Opens a session on a connection that others use, too.
    void Connect(RefCntPtr<ClientConnection> connection);
    /// Ends the session. Harmless without one; throws nothing.
    void Disconnect() noexcept;
    bool IsConnected() const;
    /// "descriptor" and "session".
    QVE_PropertyList GetProperties() const;

    /// Runs a statement; null when it has no result.
    RefCntPtr<QVE_ClientRowset> QueryExecute(std::string_view query);
    /// Gives the guid of a new statement.
    std::uint64_t StatementOpen();
    void StatementPlan(std::uint64_t statement, std::string_view plan);
    void StatementPrepare(std::uint64_t statement, std::string_view query);
    RefCntPtr<QVE_ClientRowset> StatementExecute(std::uint64_t statement);
    void StatementCancel(std::uint64_t statement);
    /// Rows of the result and units of work, all ones where unknown.
    struct Progress {
        std::uint64_t first = ~std::uint64_t{0};
        std::uint64_t last = ~std::uint64_t{0};
        std::uint64_t done = ~std::uint64_t{0};
        std::uint64_t total = ~std::uint64_t{0};
    };
    /// How far a statement is; overtakes its execution.
    Progress StatementEstimateProgress(std::uint64_t statement);
    void StatementClose(std::uint64_t statement);
    QVE_PropertyList RowsetGetProperties(std::uint64_t rowset);
    /// Fills `values` with the rowset's next reply; with nothing at its end.
    void RowsetGetValues(std::uint64_t rowset, QVE_ValueArray& values);
    void RowsetClose(std::uint64_t rowset);

    /// Opens an insert into the named columns of a table, or all its columns when none is named. Nothing of it is seen
    /// before the commit.
    struct OpenInsert {
        std::uint64_t guid = 0;
        std::uint32_t columns = 0;
    };
    OpenInsert InsertOpen(const std::vector<std::string>& columns, std::string_view table, std::string_view schema);
    QVE_PropertyList InsertGetColumnProperties(std::uint64_t insert, std::uint32_t column);
    /// Sends values row by row; a row may continue in the next call. What an earlier call sent may be why this fails.
    void InsertPutValues(std::uint64_t insert, std::size_t count, const QVE_Value* values);
    /// Opens an array for the values of an insert.
    void InsertValueArrayOpen(std::uint64_t insert, QVE_ValueArray& values);
    /// Sends the values of such an array without copying them, and clears it.
    void InsertPutValueArray(std::uint64_t insert, QVE_ValueArray& values);
    void InsertCommit(std::uint64_t insert);
    /// Rolls back what was not committed.
    void InsertClose(std::uint64_t insert);
    /// Begins to send a database file to a path of the server; gives the guid of the upload.
    std::uint64_t DatabaseUploadOpen(std::string_view path);
    /// How many bytes will be sent in all.
    void UploadSetSize(std::uint64_t upload, std::uint64_t size);
    void UploadSend(std::uint64_t upload, const void* bytes, std::uint32_t count);
    /// The file is on the server's disk then. Throws 40437 when it has another size.
    void UploadCommit(std::uint64_t upload);
    void UploadClose(std::uint64_t upload);
    /// A database file of the server, and its size.
    struct Download {
        std::uint64_t guid = 0;
        std::uint64_t size = 0;
    };
    Download DatabaseDownloadOpen(std::string_view path);
    /// Copies the next bytes of the file to `bytes`, at most `count`; gives how many. Throws 40415 at the end.
    std::size_t DownloadRecv(std::uint64_t download, void* bytes, std::uint32_t count);
    void DownloadClose(std::uint64_t download);

    /// Replaces the posted error texts, for QVE_GetErrorInfo.
    void PostErrorInfo(int status, std::vector<std::string> texts);
    struct ErrorInfo {
        int status = 0;
        std::vector<std::string> texts;
    };
    ErrorInfo GetErrorInfo() const;

private:
    using WriteFields = std::function<void(QVE_OutputIterator&)>;

    void Request(QVE_Command command, const WriteFields& write, QVE_Message& reply);
    /// Sends a whole request and waits for its reply.
    void Exchange(QVE_Message& request, QVE_Message& reply, bool executes);
    void RequestNothing(QVE_Command command, const WriteFields& write);
    void RecvReply(QVE_Message& reply);
    /// Takes a reply for a question for progress when it is one.
    bool TakeProgress(const QVE_Message& reply);
    void EndFlight();
    RefCntPtr<QVE_ClientRowset> RequestRowset(QVE_Command command, const WriteFields& write);
    WriteFields StatementFields(std::uint64_t statement) const;

    mutable TRecursiveMutex m_mutex;
    RefCntPtr<ClientConnection> m_connection;  // null without a session
    std::uint64_t m_session = 0;
    std::string m_descriptor;

    // A cancel or a question for progress meets a call under way: all have replies to come, on one session.
    std::mutex m_cancelMutex;
    bool m_inFlight = false;
    bool m_executing = false;  // the call is an execution
    unsigned m_cancels = 0;
    unsigned m_questions = 0;  // for progress, not answered yet
    std::uint64_t m_answers = 0;
    Progress m_progress;  // the last answer
    std::condition_variable m_answered;

    mutable std::mutex m_errorMutex;
    ErrorInfo m_errorInfo;
};

}  // namespace qve
