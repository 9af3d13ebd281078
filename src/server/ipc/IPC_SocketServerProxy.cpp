#include "server/ipc/IPC_SocketServerProxy.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>

#include "server/ipc/IPC_AsynchronousHandler.h"
#include "server/ipc/IPC_AsynchronousListener.h"
#include "server/ipc/IPC_Socket.h"
#include "server/ipc/IPC_SocketConnection.h"
#include "server/ipc/IPC_SocketConnectionDescriptor.h"

namespace qve {
namespace {

using Clock = std::chrono::steady_clock;

int MillisecondsUntil(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return static_cast<int>(std::max<decltype(left)>(left, 0));
}

}  // namespace

IPC_SocketServerProxy::IPC_SocketServerProxy()
    : m_handler(std::make_shared<IPC_AsynchronousHandler>()),
      m_listener(std::make_unique<IPC_AsynchronousListener>(m_handler)) {
    m_listener->ListenTo(0, false);
}

IPC_SocketServerProxy::~IPC_SocketServerProxy() = default;

IPC_ConnectionDescriptor::Ptr IPC_SocketServerProxy::GetDescriptor() const {
    const IPC_Endpoint local = m_listener->GetLocal();
    return std::make_shared<IPC_SocketConnectionDescriptor>(local.address, local.port);
}

IPC_ConnectionDescriptor::Ptr IPC_SocketServerProxy::WaitForServer(int milliseconds) {
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
    if (!m_server) {
        if (!m_handler->WaitForNotification(milliseconds)) return nullptr;
        std::shared_ptr<IPC_Socket> socket = m_listener->Take();
        if (!socket) return nullptr;
        m_server = std::make_unique<IPC_SocketConnection>(std::move(socket));
    }
    // Byte by byte, as any of them may fail to come: first the length, then so many.
    while (m_received.empty() ||
           m_received.size() < 1 + static_cast<std::size_t>(static_cast<std::uint8_t>(m_received[0]))) {
        if (!m_server->IsReadPending(MillisecondsUntil(deadline))) return nullptr;
        char byte;
        m_server->Read(&byte, 1);
        m_received += byte;
    }
    return IPC_ConnectionDescriptor::Parse(m_received.substr(1));
}

void IPC_SocketServerProxy::Close() {
    m_listener->Close();
    m_server.reset();
}

std::unique_ptr<IPC_ServerProxy> IPC_ServerProxy::MakeProxy() {
    return std::make_unique<IPC_SocketServerProxy>();
}

}  // namespace qve
