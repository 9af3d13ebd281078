#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "server/protocol/QVE_Message.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"

namespace qve {

class IPC_Connection;
class Thread;

/// A stream to a server that several sessions share. A thread of its own receives the replies and sorts them by
/// session. All operations may be called from any thread; each session waits for its own replies.
class ClientConnection : public RefCntObject {
public:
    class Session;
    /// A received reply.
    struct Message {
        std::uint64_t guid = 0;
        QVE_Message message;
    };

    /// Starts the receive thread.
    explicit ClientConnection(std::unique_ptr<IPC_Connection> connection);
    /// Disconnects and joins the thread.
    ~ClientConnection() override;

    /// Connects to a server. Throws std::invalid_argument for a bad connection string, QVE_Exception (40509) when
    /// nobody answers.
    static RefCntPtr<ClientConnection> Connect(const std::string& descriptor);

    /// Opens a session on the server. Throws QVE_Exception (40510, "session open error").
    std::uint64_t SessionOpen();
    /// Ends a session on the server, and its waiting calls. Throws QVE_Exception when the connection has ended.
    void SessionClose(std::uint64_t guid);
    /// Sends a request, whose header is completed. Throws QVE_LogicError (40511, "bad message size", "bad magic
    /// number"), and the failure that closed the connection.
    void Send(std::uint64_t guid, QVE_Message& message);
    /// The next reply for the session: its body. Blocks. Throws the failure that closed the connection.
    void Recv(std::uint64_t guid, QVE_Message& message);

    /// Ends the connection: all waiting calls fail.
    void Disconnect();
    /// False once the stream has failed or was closed.
    bool IsOpen() const;

private:
    class RecvRunnable;

    void StartReceiveThread();
    void RecvOneMessage();
    void CloseOnException() noexcept;
    [[noreturn]] void ThrowCloseException() const;
    std::shared_ptr<Session> GetSession(std::uint64_t guid) const;

    const std::unique_ptr<IPC_Connection> m_connection;
    RefCntPtr<Thread> m_receiver;
    std::mutex m_sendMutex;
    std::mutex m_openMutex;  // one request of the connection itself at a time: its replies carry no guid

    mutable std::mutex m_mutex;  // of what follows
    std::unordered_map<std::uint64_t, std::shared_ptr<Session>> m_sessions;
    std::exception_ptr m_closeException;  // set once; nothing is received after it
};

}  // namespace qve
