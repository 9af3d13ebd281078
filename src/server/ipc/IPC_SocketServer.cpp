#include "server/ipc/IPC_SocketServer.h"

#include <unistd.h>

#include <boost/asio/dispatch.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

#include "server/ipc/IPC_AsynchronousHandler.h"
#include "server/ipc/IPC_Socket.h"
#include "server/ipc/IPC_SocketConnection.h"
#include "server/ipc/IPC_SocketConnectionDescriptor.h"
#include "server/ipc/IPC_Whitelist.h"

namespace qve {

/// Waits for the end of the call-back stream and then, as a parent may close it and live on, for the death of the
/// parent, which the system shows by giving us another one.
class IPC_SocketServer::ParentWatch : public std::enable_shared_from_this<ParentWatch> {
public:
    ParentWatch(std::shared_ptr<IPC_AsynchronousListener> listener, pid_t parent)
        : m_listener(std::move(listener)), m_parent(parent), m_timer(IPC_Network::GetInstance().GetService()) {}

    void Start(IPC_Socket& callback) {
        callback.NotifyReadable([self = shared_from_this()] { self->Look(); });
    }
    void Stop() {
        boost::asio::dispatch(IPC_Network::GetInstance().GetService(), [self = shared_from_this()] {
            self->m_stopped = true;
            self->m_timer.cancel();
        });
    }

private:
    void Look() {
        if (m_stopped) return;
        if (getppid() != m_parent) {
            m_listener->Close();
            return;
        }
        m_timer.expires_after(std::chrono::milliseconds(250));
        m_timer.async_wait([self = shared_from_this()](const boost::system::error_code&) { self->Look(); });
    }

    const std::shared_ptr<IPC_AsynchronousListener> m_listener;
    const pid_t m_parent;
    // Of the network thread alone.
    boost::asio::steady_timer m_timer;
    bool m_stopped = false;
};

IPC_SocketServer::IPC_SocketServer(const IPC_SocketConnectionDescriptor& listen, bool allowRemote,
                                   const IPC_SocketConnectionDescriptor* callback,
                                   std::shared_ptr<const IPC_Whitelist> whitelist)
    : m_handler(std::make_shared<IPC_AsynchronousHandler>()),
      m_listener(std::make_shared<IPC_AsynchronousListener>(m_handler)),
      m_whitelist(std::move(whitelist)) {
    m_listener->ListenTo(listen.GetPort(), allowRemote);
    if (callback && callback->GetPort() != 0) CallBack(*callback);
}

IPC_SocketServer::~IPC_SocketServer() {
    if (m_parentWatch) m_parentWatch->Stop();
    if (m_callback) m_callback->Close();
    m_listener->Close();
}

void IPC_SocketServer::CallBack(const IPC_SocketConnectionDescriptor& callback) {
    const pid_t parent = getppid();
    m_callback = IPC_Network::GetInstance().CreateNetworkSocket();
    m_callback->Connect(callback.GetHost(), callback.GetPort());
    const std::string text = GetDescriptor()->str();
    if (text.size() >= 257) {
        throw std::runtime_error("IPC_SocketServer::IPC_SocketServer(): Descriptor is too long.");
    }
    const auto length = static_cast<std::uint8_t>(text.size());
    m_callback->Send(&length, sizeof(length));
    m_callback->Send(text.data(), text.size());
    m_parentWatch = std::make_shared<ParentWatch>(m_listener, parent);
    m_parentWatch->Start(*m_callback);
}

bool IPC_SocketServer::WaitForConnection() const {
    if (!m_listener->IsClosed()) m_handler->WaitForNotification(-1);
    return !m_listener->IsClosed();
}

std::unique_ptr<IPC_Connection> IPC_SocketServer::Accept() {
    std::shared_ptr<IPC_Socket> peer = m_listener->Take();
    if (!peer) throw std::runtime_error("IPC_SocketServer::Accept: Accept returned a null socket.");
    if (m_whitelist) {
        const IPC_Endpoint endpoint = peer->GetPeer();
        if (!m_whitelist->IsWhitelisted(endpoint.address)) {
            throw std::runtime_error("IPC_SocketServer::Accept: whitelist exclusion, peer=" + endpoint.address + ":" +
                                     std::to_string(endpoint.port));
        }
    }
    return std::make_unique<IPC_SocketConnection>(std::move(peer));
}

IPC_ConnectionDescriptor::Ptr IPC_SocketServer::GetDescriptor() const {
    IPC_Endpoint local = m_listener->GetLocal();
    return std::make_shared<IPC_SocketConnectionDescriptor>(std::move(local.address), local.port);
}

void IPC_SocketServer::Shutdown() {
    m_listener->Close();
}

std::unique_ptr<IPC_Server> IPC_Server::MakeServer(const IPC_ConnectionDescriptor::Ptr& listen, bool allowRemote,
                                                   const IPC_ConnectionDescriptor::Ptr& callback,
                                                   std::shared_ptr<const IPC_Whitelist> whitelist) {
    const auto* endpoint = dynamic_cast<const IPC_SocketConnectionDescriptor*>(listen.get());
    const auto* parent = dynamic_cast<const IPC_SocketConnectionDescriptor*>(callback.get());
    if (!endpoint || (callback && !parent)) throw std::range_error("Unknown connection type");
    return std::make_unique<IPC_SocketServer>(*endpoint, allowRemote, parent, std::move(whitelist));
}

}  // namespace qve
