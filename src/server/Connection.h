#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_set>

#include "server/Message.h"
#include "server/Queue.h"
#include "server/protocol/QVE_Message.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"
#include "system/Runnable.h"

namespace qve {
class IPC_Connection;
class QVE_InputIterator;
}  // namespace qve

namespace qve::Server {

class SessionPool;

using WorkQueue = Queue<RefCntPtr<Runnable>>;

/// One client's stream: requests come in on one thread, replies go out on another, in the order in which they were
/// queued.
class Connection : public RefCntObject {
public:
    /// Whether the length of the work queue is logged with each request.
    static std::atomic<bool> s_logQueueLength;

    Connection(std::unique_ptr<IPC_Connection> connection, RefCntPtr<SessionPool> pool, RefCntPtr<WorkQueue> work);
    ~Connection() override;

    /// The connection string of the peer.
    const std::string& GetDescription() const noexcept { return m_description; }

    /// Reads a request and hands it on: requests of the connection itself and cancels are answered here, others go to
    /// the work queue. Throws when the stream ends, and for what no client may send: a wrong magic (70003), a session
    /// that was not opened here (40412). For the receive thread.
    void RecvOneMessage();
    /// Writes the next reply. False: the connection is closing. For the send thread.
    bool SendOneMessage();
    /// Queues a reply. Any thread.
    void PushReply(std::uint64_t guid, QVE_Message& reply);
    /// Ends the stream and both threads, and lets go of all sessions. Only the first call does something. Any thread.
    void Close() noexcept;

    /// Whether a request overtakes those that wait. An unreadable one does not.
    static bool IsHighPriority(const QVE_Message& request) noexcept;
    /// Whether a request is answered at once beside one that runs: what overtakes, and the question how far that one
    /// is.
    static bool RunsBeside(const QVE_Message& request) noexcept;

private:
    void Dispatch(const QVE_Message& request, QVE_Message& reply);
    void SessionOpen(QVE_Message& reply);
    void SessionClose(QVE_InputIterator& in, QVE_Message& reply);
    bool HasSession(std::uint64_t guid) const;
    void Send(std::uint64_t guid, QVE_Message& message);

    const std::unique_ptr<IPC_Connection> m_connection;
    const std::string m_description;
    const RefCntPtr<SessionPool> m_pool;
    const RefCntPtr<WorkQueue> m_work;
    const RefCntPtr<Queue<RefCntPtr<Message>>> m_replies;
    std::atomic<bool> m_closed{false};

    mutable std::mutex m_mutex;  // the receive thread adds sessions while another closes
    std::unordered_set<std::uint64_t> m_sessions;
};

}  // namespace qve::Server
