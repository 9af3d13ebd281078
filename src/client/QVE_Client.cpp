#include "client/QVE_Client.h"

#include <cstring>
#include <optional>
#include <utility>

#include "client/ClientConnection.h"
#include "client/QVE_ClientRowset.h"
#include "client/QVE_ServerError.h"
#include "client/status.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/protocol/QVE_OutputIterator.h"
#include "server/protocol/QVE_ValueArray.h"
#include "server/protocol/status.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"

namespace qve {
namespace {

// Where the guid and the count of an insert's message stand: behind header and command, aligned to their sizes.
constexpr std::size_t s_insertGuid = QVE_Message::s_headerSize + 8;
constexpr std::size_t s_insertCount = s_insertGuid + sizeof(std::uint64_t);
constexpr std::size_t s_insertPrefix = s_insertCount + sizeof(std::uint32_t);

/// Reads the status; turns an error reply into its exception.
void ReadStatus(QVE_InputIterator& in) {
    const std::int32_t status = in.ReadStatus();
    if (status == 0) return;
    std::vector<std::string> texts;
    // Only as many as there are bytes for: the count may be anything.
    for (std::uint32_t count = in.ReadU32(); count != 0 && in.GetRemaining() != 0; --count) {
        texts.push_back(narrow(in.ReadString()));
    }
    throw QVE_ServerError(status, std::move(texts));
}

/// What a StatementCancel that went well is answered with; the reply of the call that it met is longer or an error, as
/// a rule.
bool IsPlainSuccess(const QVE_Message& reply) {
    return reply.size() == sizeof(std::int32_t) && QVE_InputIterator(reply).ReadStatus() == 0;
}

/// A reply with the four counts of progress, and nothing else. That of an execution is shorter or longer: with a rowset
/// come the properties of its columns.
std::optional<QVE_Client::Progress> ReadProgress(const QVE_Message& reply) {
    constexpr std::size_t size = 2 * sizeof(std::uint32_t) + 4 * sizeof(std::uint64_t);
    QVE_InputIterator in(reply);
    if (reply.size() != size || in.ReadStatus() != 0) return std::nullopt;
    QVE_Client::Progress progress;
    progress.first = in.ReadU64();
    progress.last = in.ReadU64();
    progress.done = in.ReadU64();
    progress.total = in.ReadU64();
    return progress;
}

}  // namespace

QVE_Client::QVE_Client() = default;

QVE_Client::~QVE_Client() {
    Disconnect();
}

void QVE_Client::Connect(const std::string& descriptor) {
    std::lock_guard lock(m_mutex);
    LogEntry() << "Opening connection to " << descriptor;
    LogEntry() << "Creating new connection: " << descriptor;
    Disconnect();
    Connect(ClientConnection::Connect(descriptor));
    m_descriptor = descriptor;
}

void QVE_Client::Connect(RefCntPtr<ClientConnection> connection) {
    std::lock_guard lock(m_mutex);
    Disconnect();
    m_session = connection->SessionOpen();
    m_connection = std::move(connection);
}

void QVE_Client::Disconnect() noexcept {
    std::lock_guard lock(m_mutex);
    const RefCntPtr<ClientConnection> connection = std::move(m_connection);
    if (!connection) return;
    try {
        connection->SessionClose(m_session);
    } catch (...) {
        // The server ends the session of a broken connection by itself.
    }
}

bool QVE_Client::IsConnected() const {
    std::lock_guard lock(m_mutex);
    return m_connection && m_connection->IsOpen();
}

QVE_PropertyList QVE_Client::GetProperties() const {
    std::lock_guard lock(m_mutex);
    QVE_PropertyList properties;
    if (!m_connection) return properties;
    properties.emplace_back(QVE_InterredValue("descriptor"), QVE_InterredValue(m_descriptor));
    properties.emplace_back(QVE_InterredValue("session"), QVE_InterredValue(m_session));
    return properties;
}

void QVE_Client::RecvReply(QVE_Message& reply) {
    // Replies of the call, of the cancels and of the questions that met it come in any order.
    QVE_Message received;
    for (unsigned replies = 0;;) {
        {
            std::lock_guard lock(m_cancelMutex);
            if (replies == m_cancels + 1 && m_questions == 0) return EndFlight();
        }
        m_connection->Recv(m_session, received);
        if (TakeProgress(received)) continue;
        if (replies++ == 0 || IsPlainSuccess(reply)) reply.swap(received);
    }
}

bool QVE_Client::TakeProgress(const QVE_Message& reply) {
    std::lock_guard lock(m_cancelMutex);
    if (m_questions == 0) return false;
    const std::optional<Progress> progress = ReadProgress(reply);
    if (!progress) return false;
    --m_questions;
    ++m_answers;
    m_progress = *progress;
    m_answered.notify_all();
    return true;
}

// With the mutex held.
void QVE_Client::EndFlight() {
    m_inFlight = m_executing = false;
    m_questions = 0;
    m_answered.notify_all();
}

void QVE_Client::Request(QVE_Command command, const WriteFields& write, QVE_Message& reply) {
    if (!m_connection) throw QVE_Exception(status::Client_NotConnected, "not connected");
    QVE_Message message;
    QVE_OutputIterator out(message);
    out.WriteHeader();
    out.WriteCommand(command);
    write(out);
    Exchange(message, reply, command == QVE_Command::StatementExecute);
}

void QVE_Client::Exchange(QVE_Message& request, QVE_Message& reply, bool executes) {
    if (!m_connection) throw QVE_Exception(status::Client_NotConnected, "not connected");
    {
        std::lock_guard lock(m_cancelMutex);
        m_connection->Send(m_session, request);
        m_inFlight = true;
        m_executing = executes;
        m_cancels = 0;
    }
    try {
        RecvReply(reply);
    } catch (...) {
        std::lock_guard lock(m_cancelMutex);
        EndFlight();
        throw;
    }
}

void QVE_Client::RequestNothing(QVE_Command command, const WriteFields& write) {
    std::lock_guard lock(m_mutex);
    QVE_Message reply;
    Request(command, write, reply);
    QVE_InputIterator in(reply);
    ReadStatus(in);
}

RefCntPtr<QVE_ClientRowset> QVE_Client::RequestRowset(QVE_Command command, const WriteFields& write) {
    std::lock_guard lock(m_mutex);
    QVE_Message reply;
    Request(command, write, reply);
    QVE_InputIterator in(reply);
    ReadStatus(in);
    if (in.ReadU32() == 0) return nullptr;
    const std::uint64_t guid = in.ReadGuid();
    std::vector<QVE_PropertyList> columns;
    for (std::uint32_t count = in.ReadU32(); count != 0; --count) columns.push_back(in.ReadProperties());
    return MakeRef<QVE_ClientRowset>(RefCntPtr<QVE_Client>(this), guid, std::move(columns));
}

QVE_Client::WriteFields QVE_Client::StatementFields(std::uint64_t statement) const {
    return [this, statement](QVE_OutputIterator& out) {
        out.WriteGuid(m_session);
        out.WriteGuid(statement);
    };
}

RefCntPtr<QVE_ClientRowset> QVE_Client::QueryExecute(std::string_view query) {
    return RequestRowset(QVE_Command::QueryExecute, [&](QVE_OutputIterator& out) { out.WriteString(query); });
}

std::uint64_t QVE_Client::StatementOpen() {
    std::lock_guard lock(m_mutex);
    QVE_Message reply;
    Request(
        QVE_Command::StatementOpen, [](QVE_OutputIterator&) {}, reply);
    QVE_InputIterator in(reply);
    ReadStatus(in);
    in.ReadGuid();  // the session, which we know
    return in.ReadGuid();
}

void QVE_Client::StatementPlan(std::uint64_t statement, std::string_view plan) {
    RequestNothing(QVE_Command::StatementPlan, [&](QVE_OutputIterator& out) {
        StatementFields(statement)(out);
        out.WriteString(plan);
    });
}

void QVE_Client::StatementPrepare(std::uint64_t statement, std::string_view query) {
    RequestNothing(QVE_Command::StatementPrepare, [&](QVE_OutputIterator& out) {
        StatementFields(statement)(out);
        out.WriteString(query);
    });
}

RefCntPtr<QVE_ClientRowset> QVE_Client::StatementExecute(std::uint64_t statement) {
    return RequestRowset(QVE_Command::StatementExecute, StatementFields(statement));
}

void QVE_Client::StatementCancel(std::uint64_t statement) {
    {
        std::lock_guard lock(m_cancelMutex);
        // A call under way reads all replies, ours too; m_connection and m_session stay as they are until it is done.
        if (m_inFlight) {
            QVE_Message message;
            QVE_OutputIterator out(message);
            out.WriteHeader();
            out.WriteCommand(QVE_Command::StatementCancel);
            StatementFields(statement)(out);
            m_connection->Send(m_session, message);
            ++m_cancels;
            return;
        }
    }
    RequestNothing(QVE_Command::StatementCancel, StatementFields(statement));
}

QVE_Client::Progress QVE_Client::StatementEstimateProgress(std::uint64_t statement) {
    {
        std::unique_lock lock(m_cancelMutex);
        if (m_inFlight && m_executing) {
            QVE_Message message;
            QVE_OutputIterator out(message);
            out.WriteHeader();
            out.WriteCommand(QVE_Command::StatementEstimateProgress);
            StatementFields(statement)(out);
            m_connection->Send(m_session, message);
            ++m_questions;
            // Whoever waits for the execution receives the answer, too; answers come in the order of the questions.
            const std::uint64_t ours = m_answers + m_questions;
            m_answered.wait(lock, [&] { return m_answers >= ours || !m_inFlight; });
            if (m_answers >= ours) return m_progress;
            return {};
        }
    }
    std::lock_guard lock(m_mutex);
    QVE_Message reply;
    Request(QVE_Command::StatementEstimateProgress, StatementFields(statement), reply);
    QVE_InputIterator in(reply);
    ReadStatus(in);
    return ReadProgress(reply).value_or(Progress());
}

void QVE_Client::StatementClose(std::uint64_t statement) {
    RequestNothing(QVE_Command::StatementClose, StatementFields(statement));
}

QVE_PropertyList QVE_Client::RowsetGetProperties(std::uint64_t rowset) {
    std::lock_guard lock(m_mutex);
    QVE_Message reply;
    Request(
        QVE_Command::RowsetGetProperties, [&](QVE_OutputIterator& out) { out.WriteGuid(rowset); }, reply);
    QVE_InputIterator in(reply);
    ReadStatus(in);
    return in.ReadProperties();
}

void QVE_Client::RowsetGetValues(std::uint64_t rowset, QVE_ValueArray& values) {
    std::lock_guard lock(m_mutex);
    QVE_Message reply;
    Request(
        QVE_Command::RowsetGetValues, [&](QVE_OutputIterator& out) { out.WriteGuid(rowset); }, reply);
    QVE_InputIterator in(reply);
    ReadStatus(in);
    const std::uint32_t count = in.ReadU32();
    values.Assign(reply, in.GetIndex(), count);
}

void QVE_Client::RowsetClose(std::uint64_t rowset) {
    RequestNothing(QVE_Command::RowsetClose, [&](QVE_OutputIterator& out) { out.WriteGuid(rowset); });
}

QVE_Client::OpenInsert QVE_Client::InsertOpen(const std::vector<std::string>& columns, std::string_view table,
                                              std::string_view schema) {
    std::lock_guard lock(m_mutex);
    QVE_Message reply;
    Request(
        QVE_Command::InsertOpen,
        [&](QVE_OutputIterator& out) {
            out.WriteU32(static_cast<std::uint32_t>(columns.size()));
            for (const std::string& column : columns) out.WriteString(column);
            out.WriteString(table);
            out.WriteString(schema);
        },
        reply);
    QVE_InputIterator in(reply);
    ReadStatus(in);
    OpenInsert opened;
    opened.guid = in.ReadGuid();
    opened.columns = in.ReadU32();
    return opened;
}

QVE_PropertyList QVE_Client::InsertGetColumnProperties(std::uint64_t insert, std::uint32_t column) {
    std::lock_guard lock(m_mutex);
    QVE_Message reply;
    Request(
        QVE_Command::InsertGetColumnProperties,
        [&](QVE_OutputIterator& out) {
            out.WriteGuid(insert);
            out.WriteU32(column);
        },
        reply);
    QVE_InputIterator in(reply);
    ReadStatus(in);
    return in.ReadProperties();
}

void QVE_Client::InsertPutValues(std::uint64_t insert, std::size_t count, const QVE_Value* values) {
    QVE_ValueArray array;
    InsertValueArrayOpen(insert, array);
    array.WriteValues(count, values);
    InsertPutValueArray(insert, array);
}

void QVE_Client::InsertValueArrayOpen(std::uint64_t insert, QVE_ValueArray& values) {
    QVE_Message prefix;
    QVE_OutputIterator out(prefix);
    out.WriteHeader();
    out.WriteCommand(QVE_Command::InsertPutValues);
    out.WriteGuid(insert);
    out.WriteU32(0);  // the count, which is known when the array goes out
    values.SetPrefix(prefix);
}

void QVE_Client::InsertPutValueArray(std::uint64_t insert, QVE_ValueArray& values) {
    if (!values.IsOpenForWrite() || values.GetMessage().size() - values.GetSizeBytes() != s_insertPrefix) {
        throw QVE_LogicError(status::Client_InsertArray, "the value array was not opened for an insert");
    }
    std::lock_guard lock(m_mutex);
    QVE_Message& message = values.GetMessage();
    QVE_OutputIterator::PatchU32(message, s_insertCount, static_cast<std::uint32_t>(values.GetNumValues()));
    std::memcpy(message.data() + s_insertGuid, &insert, sizeof insert);
    QVE_Message reply;
    Exchange(message, reply, false);
    values.Clear();
    QVE_InputIterator in(reply);
    ReadStatus(in);
}

void QVE_Client::InsertCommit(std::uint64_t insert) {
    RequestNothing(QVE_Command::InsertCommit, [&](QVE_OutputIterator& out) { out.WriteGuid(insert); });
}

void QVE_Client::InsertClose(std::uint64_t insert) {
    RequestNothing(QVE_Command::InsertClose, [&](QVE_OutputIterator& out) { out.WriteGuid(insert); });
}

std::uint64_t QVE_Client::DatabaseUploadOpen(std::string_view path) {
    std::lock_guard lock(m_mutex);
    QVE_Message reply;
    Request(
        QVE_Command::DatabaseUploadOpen, [&](QVE_OutputIterator& out) { out.WriteString(path); }, reply);
    QVE_InputIterator in(reply);
    ReadStatus(in);
    return in.ReadGuid();
}

void QVE_Client::UploadSetSize(std::uint64_t upload, std::uint64_t size) {
    RequestNothing(QVE_Command::UploadSetSize, [&](QVE_OutputIterator& out) {
        out.WriteGuid(upload);
        out.WriteU64(size);
    });
}

void QVE_Client::UploadSend(std::uint64_t upload, const void* bytes, std::uint32_t count) {
    RequestNothing(QVE_Command::UploadSend, [&](QVE_OutputIterator& out) {
        out.WriteGuid(upload);
        out.WriteBytes(count, bytes);
    });
}

void QVE_Client::UploadCommit(std::uint64_t upload) {
    RequestNothing(QVE_Command::UploadCommit, [&](QVE_OutputIterator& out) { out.WriteGuid(upload); });
}

void QVE_Client::UploadClose(std::uint64_t upload) {
    RequestNothing(QVE_Command::UploadClose, [&](QVE_OutputIterator& out) { out.WriteGuid(upload); });
}

QVE_Client::Download QVE_Client::DatabaseDownloadOpen(std::string_view path) {
    std::lock_guard lock(m_mutex);
    QVE_Message reply;
    Request(
        QVE_Command::DatabaseDownloadOpen, [&](QVE_OutputIterator& out) { out.WriteString(path); }, reply);
    QVE_InputIterator in(reply);
    ReadStatus(in);
    Download download;
    download.guid = in.ReadGuid();
    download.size = in.ReadU64();
    return download;
}

std::size_t QVE_Client::DownloadRecv(std::uint64_t download, void* bytes, std::uint32_t count) {
    std::lock_guard lock(m_mutex);
    QVE_Message reply;
    Request(
        QVE_Command::DownloadRecv,
        [&](QVE_OutputIterator& out) {
            out.WriteGuid(download);
            out.WriteU32(count);
        },
        reply);
    QVE_InputIterator in(reply);
    ReadStatus(in);
    const std::string_view received = in.ReadBytes();
    if (received.size() > count) {
        throw QVE_RuntimeError(status::QVE_InputIterator_Overrun, "DownloadRecv: more bytes than were asked for");
    }
    std::memcpy(bytes, received.data(), received.size());
    return received.size();
}

void QVE_Client::DownloadClose(std::uint64_t download) {
    RequestNothing(QVE_Command::DownloadClose, [&](QVE_OutputIterator& out) { out.WriteGuid(download); });
}

void QVE_Client::PostErrorInfo(int status, std::vector<std::string> texts) {
    std::lock_guard lock(m_errorMutex);
    m_errorInfo = {status, std::move(texts)};
}

QVE_Client::ErrorInfo QVE_Client::GetErrorInfo() const {
    std::lock_guard lock(m_errorMutex);
    return m_errorInfo;
}

}  // namespace qve
