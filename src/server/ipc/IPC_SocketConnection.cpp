#include "server/ipc/IPC_SocketConnection.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "server/ipc/IPC_AsynchronousHandler.h"
#include "server/ipc/IPC_Socket.h"
#include "server/ipc/IPC_SocketConnectionDescriptor.h"

namespace qve {
namespace {

IPC_ConnectionDescriptor::Ptr DescribePeer(const IPC_Socket& socket) {
    try {
        IPC_Endpoint peer = socket.GetPeer();
        return std::make_shared<IPC_SocketConnectionDescriptor>(std::move(peer.address), peer.port);
    } catch (const IPC_Socket::socket_closed& exception) {
        throw IPC_Connection::ipc_connection_closed(exception.what());
    }
}

}  // namespace

IPC_SocketConnection::IPC_SocketConnection(std::shared_ptr<IPC_Socket> socket)
    : m_socket(std::move(socket)),
      m_descriptor(DescribePeer(*m_socket)),
      m_handler(std::make_shared<IPC_AsynchronousHandler>()),
      m_reader(m_socket, m_handler) {}

// An outstanding notification holds the socket: closing brings it to its end.
IPC_SocketConnection::~IPC_SocketConnection() {
    m_socket->Close();
}

void IPC_SocketConnection::Read(void* data, std::size_t size) {
    try {
        m_socket->Recv(data, size);
    } catch (const IPC_Socket::socket_closed& exception) {
        throw ipc_connection_closed(exception.what());
    }
}

void IPC_SocketConnection::Read(unsigned& word) {
    Read(&word, sizeof(word));
}

void IPC_SocketConnection::Write(const void* data, std::size_t size) {
    try {
        m_socket->Send(data, size);
    } catch (const IPC_Socket::socket_closed& exception) {
        throw ipc_connection_closed(exception.what());
    } catch (const std::exception& exception) {
        throw std::runtime_error("IPC_SocketConnection::Write(len=" + std::to_string(size) + " ):" + exception.what());
    }
}

void IPC_SocketConnection::Write(unsigned word) {
    Write(&word, sizeof(word));
}

void IPC_SocketConnection::Disconnect() {
    m_socket->Close();
}

void IPC_SocketConnection::Skip(std::size_t size) {
    std::array<char, 4096> dropped;
    while (size != 0) {
        const std::size_t part = std::min(size, dropped.size());
        Read(dropped.data(), part);
        size -= part;
    }
}

bool IPC_SocketConnection::IsReadPending(int milliseconds) {
    m_reader.Start();
    if (!m_handler->WaitForNotification(milliseconds)) return false;
    m_reader.Finish();
    return true;
}

std::unique_ptr<IPC_Connection> IPC_Connection::Connect(const IPC_ConnectionDescriptor& descriptor) {
    const auto* endpoint = dynamic_cast<const IPC_SocketConnectionDescriptor*>(&descriptor);
    if (!endpoint) throw std::range_error("Unknown connection type");
    std::shared_ptr<IPC_Socket> socket = IPC_Network::GetInstance().CreateNetworkSocket();
    socket->Connect(endpoint->GetHost(), endpoint->GetPort());
    return std::make_unique<IPC_SocketConnection>(std::move(socket));
}

}  // namespace qve
