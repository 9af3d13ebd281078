#pragma once

#include <memory>

#include "server/ipc/IPC_AsynchronousReader.h"
#include "server/ipc/IPC_Connection.h"

namespace qve {

class IPC_AsynchronousHandler;
class IPC_Socket;

/// A connection over a socket.
class IPC_SocketConnection : public IPC_Connection {
public:
    /// Takes a connected socket. Throws ipc_connection_closed when the peer has gone already.
    explicit IPC_SocketConnection(std::shared_ptr<IPC_Socket> socket);
    ~IPC_SocketConnection() override;

    void Read(void* data, std::size_t size) override;
    void Read(unsigned& word) override;
    void Write(const void* data, std::size_t size) override;
    void Write(unsigned word) override;
    void Disconnect() override;
    IPC_ConnectionDescriptor::Ptr GetDescriptor() const override { return m_descriptor; }
    void Skip(std::size_t size) override;
    bool IsReadPending(int milliseconds) override;

private:
    std::shared_ptr<IPC_Socket> m_socket;
    IPC_ConnectionDescriptor::Ptr m_descriptor;
    std::shared_ptr<IPC_AsynchronousHandler> m_handler;
    IPC_AsynchronousReader m_reader;
};

}  // namespace qve
