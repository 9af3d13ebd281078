#include "server/Connection.h"

#include <cstring>
#include <utility>

#include "metrics/Scope.h"
#include "server/DispatchRunnable.h"
#include "server/Session.h"
#include "server/SessionPool.h"
#include "server/error_reply.h"
#include "server/ipc/IPC_Connection.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/protocol/QVE_OutputIterator.h"
#include "server/protocol/QVE_ReceiveMessage.h"
#include "server/status.h"
#include "system/QuillonException.h"
#include "telemetry/LogEntry.h"

namespace qve::Server {

std::atomic<bool> Connection::s_logQueueLength{false};

Connection::Connection(std::unique_ptr<IPC_Connection> connection, RefCntPtr<SessionPool> pool,
                       RefCntPtr<WorkQueue> work)
    : m_connection(std::move(connection)),
      m_description(m_connection->GetDescriptor()->str()),
      m_pool(std::move(pool)),
      m_work(std::move(work)),
      m_replies(MakeRef<Queue<RefCntPtr<Message>>>()) {}

Connection::~Connection() = default;

namespace {

/// Idle, which no client sends, for a request that cannot be read.
QVE_Command CommandOf(const QVE_Message& request) noexcept {
    try {
        return QVE_InputIterator(request).ReadCommand();
    } catch (...) {
        return QVE_Command::Idle;
    }
}

}  // namespace

bool Connection::IsHighPriority(const QVE_Message& request) noexcept {
    return CommandOf(request) == QVE_Command::StatementCancel;
}

bool Connection::RunsBeside(const QVE_Message& request) noexcept {
    return IsHighPriority(request) || CommandOf(request) == QVE_Command::StatementEstimateProgress;
}

bool Connection::HasSession(std::uint64_t guid) const {
    std::lock_guard lock(m_mutex);
    return m_sessions.count(guid) != 0;
}

void Connection::RecvOneMessage() {
    QVE_Message request;
    const std::uint64_t guid = QVE_ReceiveMessage(*m_connection, request);
    if (guid == 0) {
        QVE_Message reply;
        Dispatch(request, reply);
        PushReply(0, reply);
        return;
    }
    if (!HasSession(guid)) throw QVE_RuntimeError(status::Connection_InvalidSession, "invalid session identifier");
    const RefCntPtr<Session> session = m_pool->GetSession(guid);
    const bool overtakes = RunsBeside(request);
    const auto dispatch = MakeRef<DispatchRunnable>(RefCntPtr<Connection>(this), session, m_work);
    if (overtakes) {
        dispatch->Answer(request);
        return;
    }
    // Requests that a client sends ahead wait in its session: no two of them run at once.
    if (!session->Enqueue(request)) return;
    const std::size_t length = m_work->Push(dispatch);
    if (s_logQueueLength) LogEntry() << "RunQueueLength = " << length << ": session" << guid;
}

bool Connection::SendOneMessage() {
    const RefCntPtr<Message> message = m_replies->Pop();
    if (!message) return false;
    Send(message->GetGuid(), message->GetMessage());
    return true;
}

void Connection::PushReply(std::uint64_t guid, QVE_Message& reply) {
    m_replies->Push(MakeRef<Message>(guid, reply));
}

void Connection::Send(std::uint64_t guid, QVE_Message& message) {
    if (message.size() < QVE_Message::s_headerSize) {
        throw QVE_RuntimeError(status::Connection_Send_Short, "protocol error");
    }
    if (std::memcmp(message.data(), &QVE_Message::s_magic, sizeof(QVE_Message::s_magic)) != 0) {
        throw QVE_RuntimeError(status::Connection_Send_Magic, "protocol error");
    }
    QVE_OutputIterator::PatchHeader(message, guid);
    m_connection->Write(message.data(), message.size());
}

// An unknown command leaves the reply empty, which Send refuses: the connection ends.
void Connection::Dispatch(const QVE_Message& request, QVE_Message& reply) {
    QVE_InputIterator in(request);
    const QVE_Command command = in.ReadCommand();
    if (command == QVE_Command::SessionOpen) {
        SessionOpen(reply);
    } else if (command == QVE_Command::SessionClose) {
        SessionClose(in, reply);
    }
}

void Connection::SessionOpen(QVE_Message& reply) {
    const Metrics::Scope scope("SessionOpen");
    try {
        const std::uint64_t guid = m_pool->MakeSession()->GetGuid();
        bool closed;
        {
            std::lock_guard lock(m_mutex);
            m_sessions.insert(guid);
            closed = m_closed;
        }
        // Close has seen the set without this one.
        if (closed) m_pool->EraseSession(guid);
        LogEntry() << "qveserver: open session" << guid;
        QVE_OutputIterator out(reply);
        out.WriteHeader();
        out.WriteStatus(0);
        out.WriteGuid(guid);
    } catch (const std::exception& exception) {
        MakeErrorReply(exception, reply);
    }
}

void Connection::SessionClose(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("SessionClose");
    try {
        const std::uint64_t guid = in.ReadGuid();
        LogEntry() << "qveserver: close session" << guid << ", connection=" << m_description;
        bool isOurs;
        {
            std::lock_guard lock(m_mutex);
            isOurs = m_sessions.erase(guid) != 0;
        }
        // No client ends the session of another.
        if (isOurs) m_pool->EraseSession(guid);
        QVE_OutputIterator out(reply);
        out.WriteHeader();
        out.WriteStatus(0);
    } catch (const std::exception& exception) {
        MakeErrorReply(exception, reply);
    }
}

void Connection::Close() noexcept {
    std::unordered_set<std::uint64_t> sessions;
    {
        std::lock_guard lock(m_mutex);
        if (m_closed.exchange(true)) return;
        sessions.swap(m_sessions);
    }
    try {
        LogEntry() << "qveserver: closing connection=" << m_description;
        for (const std::uint64_t guid : sessions) {
            LogEntry() << "qveserver: closing orphaned session" << guid;
            m_pool->EraseSession(guid);
        }
        m_replies->Push(nullptr);
    } catch (...) {
        // Out of memory: the broken stream ends the threads as well.
    }
    m_connection->Disconnect();
}

}  // namespace qve::Server
