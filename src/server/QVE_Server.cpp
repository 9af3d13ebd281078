#include "server/QVE_Server.h"

#include <algorithm>
#include <utility>

#include "server/RecvRunnable.h"
#include "server/SendRunnable.h"
#include "server/SessionPool.h"
#include "server/WorkerRunnable.h"
#include "server/ipc/IPC_Connection.h"
#include "server/ipc/IPC_Server.h"
#include "storage/stream/DataStream.h"
#include "telemetry/LogEntry.h"

namespace qve {

using Server::Connection;

QVE_Server::QVE_Server(std::unique_ptr<IPC_Server> listener, usrprops properties)
    : m_listener(std::move(listener)),
      m_work(MakeRef<Server::WorkQueue>()),
      m_pool(MakeRef<Server::SessionPool>(properties)) {
    DataStream::s_executing = 0;
    unsigned long long workers = DataStream::GetMaxConcurrency();
    if (properties.has(usrpropkey::worker_threads)) {
        workers = std::min(workers, properties.number(usrpropkey::worker_threads));
    }
    workers = std::max<unsigned long long>(workers, 1);
    while (m_workers.size() < workers) {
        m_workers.push_back(MakeRef<Thread>(MakeRef<Server::WorkerRunnable>(m_work)));
    }
}

QVE_Server::~QVE_Server() {
    m_listener->Shutdown();
    CloseConnections();
    // Nobody waits for the replies of what has not begun.
    m_work->Abandon();
    for (std::size_t i = 0; i < m_workers.size(); ++i) m_work->Push(nullptr);
    for (const RefCntPtr<Thread>& worker : m_workers) worker->join();
    // What queued up again behind the stop signs refers to the queue itself.
    m_work->Abandon();
}

bool QVE_Server::Pump() {
    JoinFinished();
    if (!m_listener->WaitForConnection()) {
        CloseConnections();
        return false;
    }
    try {
        LogEntry() << "qveserver: accepting new connection";
        AddConnection(m_listener->Accept());
    } catch (const std::exception& exception) {
        LogEntry() << "qveserver: failed connection: " << exception.what();
    }
    return true;
}

void QVE_Server::Shutdown() {
    m_listener->Shutdown();
}

RefCntPtr<Connection> QVE_Server::AddConnection(std::unique_ptr<IPC_Connection> ipc) {
    auto connection = MakeRef<Connection>(std::move(ipc), m_pool, m_work);
    LogEntry() << "qveserver: new connection, connection=" << connection->GetDescription();
    // Under the mutex, so that a thread that ends at once finds its entry to remove.
    std::lock_guard lock(m_mutex);
    const auto start = [&](RefCntPtr<Runnable> body) {
        auto thread = MakeRef<Thread>(std::move(body));
        const std::thread::id id = thread->get_id();
        m_threads[id] = {std::move(thread), connection};
    };
    try {
        start(MakeRef<Server::RecvRunnable>(connection, *this));
        start(MakeRef<Server::SendRunnable>(connection, *this));
    } catch (...) {
        // One thread without the other: it ends with the connection.
        connection->Close();
        throw;
    }
    return connection;
}

void QVE_Server::RemoveCurrentThread() {
    std::lock_guard lock(m_mutex);
    const auto found = m_threads.find(std::this_thread::get_id());
    if (found == m_threads.end()) return;
    m_finished.push_back(std::move(found->second.first));
    m_threads.erase(found);
}

void QVE_Server::JoinFinished() {
    std::vector<RefCntPtr<Thread>> finished;
    {
        std::lock_guard lock(m_mutex);
        finished.swap(m_finished);
    }
    for (const RefCntPtr<Thread>& thread : finished) thread->join();
}

void QVE_Server::CloseConnections() {
    decltype(m_threads) threads;
    {
        std::lock_guard lock(m_mutex);
        threads.swap(m_threads);
    }
    // What runs for the connections ends first, as far as it can be cancelled.
    m_pool->CancelAll();
    for (const auto& [id, entry] : threads) entry.second->Close();
    for (const auto& [id, entry] : threads) entry.first->join();
    JoinFinished();
}

}  // namespace qve
