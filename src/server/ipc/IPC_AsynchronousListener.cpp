#include "server/ipc/IPC_AsynchronousListener.h"

#include <boost/asio/dispatch.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/v6_only.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

#include "server/ipc/IPC_AsynchronousHandler.h"
#include "server/ipc/IPC_Socket.h"

namespace qve {

namespace asio = boost::asio;
using asio::ip::tcp;

class IPC_AsynchronousListener::Impl : public std::enable_shared_from_this<Impl> {
public:
    explicit Impl(std::shared_ptr<IPC_AsynchronousHandler> handler)
        : m_handler(std::move(handler)), m_acceptor(Service()), m_retry(Service()) {}

    void TryListenTo(std::uint16_t port, bool allowRemote, bool ipv6) {
        const tcp::endpoint endpoint =
            ipv6 ? tcp::endpoint(allowRemote ? asio::ip::address_v6::any() : asio::ip::address_v6::loopback(), port)
                 : tcp::endpoint(allowRemote ? asio::ip::address_v4::any() : asio::ip::address_v4::loopback(), port);
        tcp::acceptor acceptor(Service());
        acceptor.open(endpoint.protocol());
        acceptor.set_option(tcp::acceptor::reuse_address(true));
        // Peers that speak IPv4 are served, too, and show up with mapped addresses.
        if (ipv6 && allowRemote) acceptor.set_option(asio::ip::v6_only(false));
        acceptor.bind(endpoint);
        acceptor.listen();
        m_local = acceptor.local_endpoint();
        m_acceptor = std::move(acceptor);
    }

    void AcceptNext() {
        m_acceptor.async_accept([self = shared_from_this()](const boost::system::error_code& error, tcp::socket peer) {
            self->Accepted(error, std::move(peer));
        });
    }

    std::shared_ptr<IPC_Socket> Take() {
        std::lock_guard lock(m_mutex);
        if (!m_failure.empty()) throw std::runtime_error(std::exchange(m_failure, std::string()));
        if (m_peers.empty()) return nullptr;
        std::shared_ptr<IPC_Socket> peer = std::move(m_peers.front());
        m_peers.pop_front();
        return peer;
    }

    void Close() {
        {
            std::lock_guard lock(m_mutex);
            if (std::exchange(m_closed, true)) return;
        }
        // Everything that touches the acceptor happens on the network thread.
        asio::dispatch(Service(), [self = shared_from_this()] {
            boost::system::error_code ignored;
            self->m_acceptor.close(ignored);
            self->m_retry.cancel();
        });
        m_handler->Notify();
    }

    bool IsClosed() const {
        std::lock_guard lock(m_mutex);
        return m_closed;
    }
    const tcp::endpoint& GetLocal() const { return m_local; }

private:
    static asio::io_context& Service() { return IPC_Network::GetInstance().GetService(); }

    static bool IsShortage(const boost::system::error_code& error) {
        namespace errc = boost::system::errc;
        return error == errc::too_many_files_open || error == errc::too_many_files_open_in_system ||
               error == errc::no_buffer_space || error == errc::not_enough_memory;
    }

    /// What ails one peer alone, that it left before it was accepted for instance.
    static bool IsOfPeer(const boost::system::error_code& error) {
        namespace errc = boost::system::errc;
        return error == asio::error::connection_aborted || error == asio::error::connection_reset ||
               error == asio::error::interrupted || error == asio::error::try_again ||
               error == asio::error::host_unreachable || error == asio::error::network_unreachable ||
               error == asio::error::network_down || error == errc::protocol_error ||
               error == errc::operation_not_permitted || error == errc::no_protocol_option ||
               error == errc::operation_not_supported || error == errc::timed_out;
    }

    void Accepted(const boost::system::error_code& error, tcp::socket peer) {
        if (IsClosed()) return;
        if (!error) {
            m_short = false;
            Keep(std::move(peer));
            AcceptNext();
        } else if (IsOfPeer(error)) {
            AcceptNext();
        } else if (IsShortage(error)) {
            if (!std::exchange(m_short, true)) {
                Fail("IPC_SocketServer::Accept: " + error.message() + ", waiting for connections to close");
            }
            m_retry.expires_after(std::chrono::milliseconds(100));
            m_retry.async_wait([self = shared_from_this()](const boost::system::error_code&) {
                if (!self->IsClosed()) self->AcceptNext();
            });
        } else {
            Fail("IPC_SocketServer::Accept: " + error.message());
            Close();
        }
    }

    void Keep(tcp::socket peer) {
        boost::system::error_code error;
        const bool ipv6 = m_local.protocol() == tcp::v6();
        const int descriptor = peer.release(error);
        if (error) return;
        auto socket = std::make_shared<IPC_Socket>(descriptor, ipv6);
        {
            std::lock_guard lock(m_mutex);
            m_peers.push_back(std::move(socket));
        }
        m_handler->Notify();
    }

    void Fail(std::string text) {
        {
            std::lock_guard lock(m_mutex);
            m_failure = std::move(text);
        }
        m_handler->Notify();
    }

    const std::shared_ptr<IPC_AsynchronousHandler> m_handler;
    tcp::endpoint m_local;  // written before the first accept

    // Of the network thread alone.
    tcp::acceptor m_acceptor;
    asio::steady_timer m_retry;
    bool m_short = false;

    mutable std::mutex m_mutex;
    std::deque<std::shared_ptr<IPC_Socket>> m_peers;
    std::string m_failure;
    bool m_closed = false;
};

IPC_AsynchronousListener::IPC_AsynchronousListener(std::shared_ptr<IPC_AsynchronousHandler> handler)
    : m_impl(std::make_shared<Impl>(std::move(handler))) {}

IPC_AsynchronousListener::~IPC_AsynchronousListener() {
    m_impl->Close();
}

void IPC_AsynchronousListener::ListenTo(std::uint16_t port, bool allowRemote) {
    try {
        m_impl->TryListenTo(port, allowRemote, true);
    } catch (const std::exception&) {
        // A machine without IPv6.
        m_impl->TryListenTo(port, allowRemote, false);
    }
    asio::dispatch(IPC_Network::GetInstance().GetService(), [impl = m_impl] { impl->AcceptNext(); });
}

std::shared_ptr<IPC_Socket> IPC_AsynchronousListener::Take() {
    return m_impl->Take();
}

void IPC_AsynchronousListener::Close() {
    m_impl->Close();
}

bool IPC_AsynchronousListener::IsClosed() const {
    return m_impl->IsClosed();
}

IPC_Endpoint IPC_AsynchronousListener::GetLocal() const {
    const tcp::endpoint& local = m_impl->GetLocal();
    return {local.address().to_string(), local.port()};
}

}  // namespace qve
