#include "client/ClientConnection.h"

#include <condition_variable>
#include <cstring>
#include <deque>
#include <utility>

#include "client/status.h"
#include "os/Thread.h"
#include "server/ipc/IPC_Connection.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/protocol/QVE_OutputIterator.h"
#include "server/protocol/QVE_ReceiveMessage.h"
#include "system/QuillonException.h"
#include "system/Runnable.h"
#include "telemetry/LogEntry.h"

namespace qve {
namespace {

constexpr std::uint64_t s_connectionGuid = 0;

}  // namespace

/// The replies that wait for one session, and the calls that wait for replies.
class ClientConnection::Session {
public:
    explicit Session(std::uint64_t guid) : m_guid(guid) {}
    std::uint64_t GetGuid() const noexcept { return m_guid; }

    void PushMessage(Message&& message) {
        std::lock_guard lock(m_mutex);
        m_messages.push_back(std::move(message));
        m_arrived.notify_one();
    }
    /// False when the session ended and nothing is left.
    bool PopMessage(Message& message) {
        std::unique_lock lock(m_mutex);
        m_arrived.wait(lock, [this] { return m_ended || !m_messages.empty(); });
        if (m_messages.empty()) return false;
        message = std::move(m_messages.front());
        m_messages.pop_front();
        return true;
    }
    void End() {
        std::lock_guard lock(m_mutex);
        m_ended = true;
        m_arrived.notify_all();
    }

private:
    const std::uint64_t m_guid;
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::deque<Message> m_messages;
    bool m_ended = false;
};

/// Owned by the thread; the connection outlives both, as its destructor joins.
class ClientConnection::RecvRunnable : public Runnable {
public:
    explicit RecvRunnable(ClientConnection& connection) : m_connection(connection) {}
    void Run() override {
        try {
            while (true) m_connection.RecvOneMessage();
        } catch (...) {
            m_connection.CloseOnException();
        }
    }

private:
    ClientConnection& m_connection;
};

ClientConnection::ClientConnection(std::unique_ptr<IPC_Connection> connection) : m_connection(std::move(connection)) {
    m_sessions.emplace(s_connectionGuid, std::make_shared<Session>(s_connectionGuid));
    StartReceiveThread();
}

ClientConnection::~ClientConnection() {
    m_connection->Disconnect();
    m_receiver->join();
}

RefCntPtr<ClientConnection> ClientConnection::Connect(const std::string& descriptor) {
    const IPC_ConnectionDescriptor::Ptr endpoint = IPC_ConnectionDescriptor::Parse(descriptor);
    try {
        return MakeRef<ClientConnection>(IPC_Connection::Connect(*endpoint));
    } catch (const std::runtime_error& exception) {
        LogEntry() << "Network exception encountered when attempting to connect: " << exception.what();
        throw QVE_Exception(status::Client_Network, descriptor + ": " + exception.what());
    }
}

void ClientConnection::StartReceiveThread() {
    m_receiver = MakeRef<Thread>(MakeRef<RecvRunnable>(*this));
}

void ClientConnection::RecvOneMessage() {
    Message message;
    message.guid = QVE_ReceiveMessage(*m_connection, message.message);
    // A reply for a session that is gone is dropped.
    if (const std::shared_ptr<Session> session = GetSession(message.guid)) session->PushMessage(std::move(message));
}

void ClientConnection::CloseOnException() noexcept {
    std::exception_ptr reason;
    try {
        throw;
    } catch (const QVE_RuntimeError&) {
        reason = std::current_exception();
    } catch (const std::exception& exception) {
        reason = std::make_exception_ptr(QVE_Exception(status::Client_Network, exception.what()));
    } catch (...) {
        reason = std::make_exception_ptr(QVE_Exception(status::Client_Network, "Unidentified exception"));
    }
    m_connection->Disconnect();
    std::lock_guard lock(m_mutex);
    m_closeException = reason;
    for (const auto& [guid, session] : m_sessions) session->End();
}

void ClientConnection::ThrowCloseException() const {
    std::exception_ptr reason;
    {
        std::lock_guard lock(m_mutex);
        reason = m_closeException;
    }
    if (reason) std::rethrow_exception(reason);
    throw QVE_Exception(status::Client_NotConnected, "session closed");
}

std::shared_ptr<ClientConnection::Session> ClientConnection::GetSession(std::uint64_t guid) const {
    std::lock_guard lock(m_mutex);
    const auto found = m_sessions.find(guid);
    return found == m_sessions.end() ? nullptr : found->second;
}

std::uint64_t ClientConnection::SessionOpen() {
    std::lock_guard opening(m_openMutex);
    QVE_Message message;
    QVE_OutputIterator out(message);
    out.WriteHeader();
    out.WriteCommand(QVE_Command::SessionOpen);
    Send(s_connectionGuid, message);
    Recv(s_connectionGuid, message);
    QVE_InputIterator in(message);
    if (in.ReadStatus() != 0) throw QVE_Exception(status::ClientConnection_SessionOpen, "session open error");
    const std::uint64_t guid = in.ReadGuid();
    std::lock_guard lock(m_mutex);
    m_sessions.insert_or_assign(guid, std::make_shared<Session>(guid));
    return guid;
}

void ClientConnection::SessionClose(std::uint64_t guid) {
    {
        std::lock_guard lock(m_mutex);
        const auto found = m_sessions.find(guid);
        if (found != m_sessions.end()) {
            found->second->End();
            m_sessions.erase(found);
        }
    }
    std::lock_guard closing(m_openMutex);
    QVE_Message message;
    QVE_OutputIterator out(message);
    out.WriteHeader();
    out.WriteCommand(QVE_Command::SessionClose);
    out.WriteGuid(guid);
    Send(s_connectionGuid, message);
    Recv(s_connectionGuid, message);
}

void ClientConnection::Send(std::uint64_t guid, QVE_Message& message) {
    if (message.size() < QVE_Message::s_headerSize) {
        throw QVE_LogicError(status::ClientConnection_Send, "bad message size");
    }
    if (std::memcmp(message.data(), &QVE_Message::s_magic, sizeof(QVE_Message::s_magic)) != 0) {
        throw QVE_LogicError(status::ClientConnection_Send, "bad magic number");
    }
    if (!IsOpen()) ThrowCloseException();
    QVE_OutputIterator::PatchHeader(message, guid);
    try {
        std::lock_guard lock(m_sendMutex);
        m_connection->Write(message.data(), message.size());
    } catch (const std::runtime_error& exception) {
        throw QVE_Exception(status::Client_Network, exception.what());
    }
}

void ClientConnection::Recv(std::uint64_t guid, QVE_Message& message) {
    const std::shared_ptr<Session> session = GetSession(guid);
    Message received;
    if (!session || !session->PopMessage(received)) ThrowCloseException();
    message.swap(received.message);
}

void ClientConnection::Disconnect() {
    m_connection->Disconnect();
}

bool ClientConnection::IsOpen() const {
    std::lock_guard lock(m_mutex);
    return !m_closeException;
}

}  // namespace qve
