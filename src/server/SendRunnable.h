#pragma once

#include "server/Connection.h"
#include "system/RefCntPtr.h"
#include "system/Runnable.h"

namespace qve {
class QVE_Server;
}

namespace qve::Server {

/// Writes replies until the connection closes.
class SendRunnable : public Runnable {
public:
    /// The server outlives the thread.
    SendRunnable(RefCntPtr<Connection> connection, QVE_Server& server)
        : m_connection(std::move(connection)), m_server(server) {}
    void Run() override;

private:
    const RefCntPtr<Connection> m_connection;
    QVE_Server& m_server;
};

}  // namespace qve::Server
