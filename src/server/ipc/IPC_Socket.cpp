#include "server/ipc/IPC_Socket.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <utility>

namespace qve {

namespace asio = boost::asio;
using asio::ip::tcp;

class IPC_Socket::IPC_Socket_Impl {
public:
    IPC_Socket_Impl() : m_socket(IPC_Network::GetInstance().GetService()) {}
    IPC_Socket_Impl(int descriptor, bool ipv6) : IPC_Socket_Impl() {
        m_socket.assign(ipv6 ? tcp::v6() : tcp::v4(), descriptor);
        SetOptions();
    }

    void Connect(const std::string& host, std::uint16_t port) {
        boost::system::error_code error = asio::error::host_not_found;
        for (const IPC_Endpoint& endpoint : IPC_Network::GetInstance().Resolve(host, port)) {
            m_socket.close(error);
            m_socket.connect({asio::ip::make_address(endpoint.address), endpoint.port}, error);
            if (!error) break;
        }
        if (error) throw std::runtime_error("could not connect: " + error.message());
        SetOptions();
    }

    tcp::socket& GetSocket() { return m_socket; }
    void CheckOpen() const {
        if (!m_socket.is_open()) throw socket_closed("Socket not connected");
    }

private:
    /// Requests and replies are whole messages, each written at once: waiting for more to send only costs time.
    void SetOptions() {
        boost::system::error_code ignored;
        m_socket.set_option(tcp::no_delay(true), ignored);
    }

    tcp::socket m_socket;
};

namespace {

std::string DescribeLength(const char* function, std::size_t length, std::size_t moved) {
    return std::string("in IPC_Socket::") + function + "(len=" + std::to_string(length) +
           ", n=" + std::to_string(moved) + "): Length out of range";
}

bool IsClosed(const boost::system::error_code& error) {
    return error == asio::error::eof || error == asio::error::connection_reset || error == asio::error::broken_pipe ||
           error == asio::error::connection_aborted || error == asio::error::not_connected ||
           error == asio::error::bad_descriptor || error == asio::error::shut_down;
}

IPC_Endpoint ToEndpoint(const tcp::endpoint& endpoint, const boost::system::error_code& error) {
    if (error) throw IPC_Socket::socket_closed("Socket not connected");
    return {endpoint.address().to_string(), endpoint.port()};
}

}  // namespace

IPC_Socket::IPC_Socket() : m_impl(std::make_unique<IPC_Socket_Impl>()) {}
IPC_Socket::IPC_Socket(int descriptor, bool ipv6) : m_impl(std::make_unique<IPC_Socket_Impl>(descriptor, ipv6)) {}
IPC_Socket::~IPC_Socket() = default;

void IPC_Socket::Connect(const std::string& host, std::uint16_t port) {
    m_impl->Connect(host, port);
}

// Blocking calls go straight to the system rather than through the network thread: two thread switches less for each
// message, and a shutdown wakes them just as well.
void IPC_Socket::Recv(void* buffer, std::size_t length) {
    if (!buffer) throw buffer_is_null();
    m_impl->CheckOpen();
    for (std::size_t moved = 0; moved < length;) {
        boost::system::error_code error;
        const std::size_t n =
            m_impl->GetSocket().read_some(asio::buffer(static_cast<char*>(buffer) + moved, length - moved), error);
        if (IsClosed(error)) throw socket_closed("Socket closed while receiving.");
        if (error) throw std::runtime_error(error.message());
        if (n > length - moved) throw std::runtime_error(DescribeLength("Recv", length, n));
        moved += n;
    }
}

void IPC_Socket::Send(const void* buffer, std::size_t length) {
    if (!buffer) throw buffer_is_null();
    m_impl->CheckOpen();
    for (std::size_t moved = 0; moved < length;) {
        boost::system::error_code error;
        const std::size_t n = m_impl->GetSocket().write_some(
            asio::buffer(static_cast<const char*>(buffer) + moved, length - moved), error);
        if (IsClosed(error)) throw socket_closed("Socket closed while sending.");
        if (error) throw std::runtime_error(error.message());
        if (n > length - moved) throw std::runtime_error(DescribeLength("Send", length, n));
        moved += n;
    }
}

void IPC_Socket::Close() noexcept {
    // Not close(): another thread may sit in a call on the descriptor, whose number would be given out again.
    boost::system::error_code ignored;
    m_impl->GetSocket().shutdown(tcp::socket::shutdown_both, ignored);
}

void IPC_Socket::NotifyReadable(std::function<void()> handler) {
    m_impl->GetSocket().async_wait(tcp::socket::wait_read, [self = shared_from_this(), handler = std::move(handler)](
                                                               const boost::system::error_code&) { handler(); });
}

IPC_Endpoint IPC_Socket::GetPeer() const {
    boost::system::error_code error;
    const tcp::endpoint endpoint = m_impl->GetSocket().remote_endpoint(error);
    return ToEndpoint(endpoint, error);
}

IPC_Endpoint IPC_Socket::GetLocal() const {
    boost::system::error_code error;
    const tcp::endpoint endpoint = m_impl->GetSocket().local_endpoint(error);
    return ToEndpoint(endpoint, error);
}

}  // namespace qve
