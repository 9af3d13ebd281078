#pragma once

#include <memory>
#include <string>

#include "server/ipc/IPC_ServerProxy.h"

namespace qve {

class IPC_AsynchronousHandler;
class IPC_AsynchronousListener;
class IPC_SocketConnection;

/// The call-back over a socket of the loopback address: a byte with a length, and a connection string of that length.
class IPC_SocketServerProxy : public IPC_ServerProxy {
public:
    IPC_SocketServerProxy();
    ~IPC_SocketServerProxy() override;

    IPC_ConnectionDescriptor::Ptr GetDescriptor() const override;
    IPC_ConnectionDescriptor::Ptr WaitForServer(int milliseconds) override;
    void Close() override;

private:
    std::shared_ptr<IPC_AsynchronousHandler> m_handler;
    std::unique_ptr<IPC_AsynchronousListener> m_listener;
    std::unique_ptr<IPC_SocketConnection> m_server;
    std::string m_received;  // of a call-back that has not come whole yet
};

}  // namespace qve
