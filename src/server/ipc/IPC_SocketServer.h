#pragma once

#include <memory>

#include "server/ipc/IPC_AsynchronousListener.h"
#include "server/ipc/IPC_Server.h"

namespace qve {

class IPC_AsynchronousHandler;
class IPC_SocketConnectionDescriptor;
class IPC_Whitelist;

/// A listening socket. When a parent process was called back and has died, the listener closes by itself: nobody would
/// end the server otherwise.
class IPC_SocketServer : public IPC_Server {
public:
    /// Binds, listens and calls back, as IPC_Server::MakeServer says; `callback` may be null.
    IPC_SocketServer(const IPC_SocketConnectionDescriptor& listen, bool allowRemote,
                     const IPC_SocketConnectionDescriptor* callback, std::shared_ptr<const IPC_Whitelist> whitelist);
    ~IPC_SocketServer() override;

    bool WaitForConnection() const override;
    std::unique_ptr<IPC_Connection> Accept() override;
    IPC_ConnectionDescriptor::Ptr GetDescriptor() const override;
    void Shutdown() override;

private:
    class ParentWatch;

    void CallBack(const IPC_SocketConnectionDescriptor& callback);

    std::shared_ptr<IPC_AsynchronousHandler> m_handler;
    std::shared_ptr<IPC_AsynchronousListener> m_listener;
    std::shared_ptr<const IPC_Whitelist> m_whitelist;
    std::shared_ptr<IPC_Socket> m_callback;  // open as long as the server: the parent sees us die
    std::shared_ptr<ParentWatch> m_parentWatch;
};

}  // namespace qve
