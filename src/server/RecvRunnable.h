#pragma once

#include "server/Connection.h"
#include "system/RefCntPtr.h"
#include "system/Runnable.h"

namespace qve {
class QVE_Server;
}

namespace qve::Server {

/// Reads requests until the stream ends.
class RecvRunnable : public Runnable {
public:
    /// The server outlives the thread.
    RecvRunnable(RefCntPtr<Connection> connection, QVE_Server& server)
        : m_connection(std::move(connection)), m_server(server) {}
    void Run() override;

private:
    const RefCntPtr<Connection> m_connection;
    QVE_Server& m_server;
};

}  // namespace qve::Server
