#include "server/ipc/IPC_AsynchronousReader.h"

#include <utility>

#include "server/ipc/IPC_AsynchronousHandler.h"
#include "server/ipc/IPC_Socket.h"

namespace qve {

IPC_AsynchronousReader::IPC_AsynchronousReader(std::shared_ptr<IPC_Socket> socket,
                                               std::shared_ptr<IPC_AsynchronousHandler> handler)
    : m_socket(std::move(socket)), m_handler(std::move(handler)) {}

void IPC_AsynchronousReader::Start() {
    if (std::exchange(m_outstanding, true)) return;
    m_socket->NotifyReadable([handler = m_handler] { handler->Notify(); });
}

}  // namespace qve
