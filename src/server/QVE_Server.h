#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "os/Thread.h"
#include "server/Connection.h"
#include "system/RefCntPtr.h"
#include "types/usrprops.h"

namespace qve {

class IPC_Connection;
class IPC_Server;

namespace Server {
class SessionPool;
}

/// The server: accepts connections, each with a thread for either direction, and runs the requests of their sessions on
/// a fixed pool of workers.
class QVE_Server {
public:
    /// Starts the workers. Of the properties, "worker-threads" can make them fewer than
    /// DataStream::GetMaxConcurrency(); all go to the sessions.
    QVE_Server(std::unique_ptr<IPC_Server> listener, usrprops properties);
    /// Closes what is open, cancels what runs, and joins all threads.
    ~QVE_Server();
    QVE_Server(const QVE_Server&) = delete;
    QVE_Server& operator=(const QVE_Server&) = delete;

    /// Waits for one connection and takes it in. False: the listener has gone and all connections are closed.
    bool Pump();
    /// Closes the listener: Pump returns false. Any thread.
    void Shutdown();
    RefCntPtr<Server::Connection> AddConnection(std::unique_ptr<IPC_Connection> connection);
    /// Takes the calling thread, which is about to end, off its connection.
    void RemoveCurrentThread();

private:
    void CloseConnections();
    void JoinFinished();

    const std::unique_ptr<IPC_Server> m_listener;
    const RefCntPtr<Server::WorkQueue> m_work;
    const RefCntPtr<Server::SessionPool> m_pool;
    std::vector<RefCntPtr<Thread>> m_workers;

    std::mutex m_mutex;
    std::map<std::thread::id, std::pair<RefCntPtr<Thread>, RefCntPtr<Server::Connection>>> m_threads;
    std::vector<RefCntPtr<Thread>> m_finished;  // to be joined: none must outlive what it uses
};

}  // namespace qve
