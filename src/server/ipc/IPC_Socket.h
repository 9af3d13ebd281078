#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "server/ipc/IPC_Network.h"

namespace qve {

/// A stream socket. Held by shared_ptr, so that an asynchronous operation may outlive its owner. One thread may receive
/// while another sends; any thread may close, which ends the blocked calls of the others.
class IPC_Socket : public std::enable_shared_from_this<IPC_Socket> {
public:
    /// The caller gave no buffer.
    class buffer_is_null : public std::runtime_error {
    public:
        buffer_is_null() : std::runtime_error("Buffer is null") {}
    };
    /// The socket is not connected, or no longer.
    class socket_closed : public std::runtime_error {
    public:
        using std::runtime_error::runtime_error;
    };

    /// Not connected.
    IPC_Socket();
    /// Takes over the descriptor of a connected socket.
    IPC_Socket(int descriptor, bool ipv6);
    ~IPC_Socket();
    IPC_Socket(const IPC_Socket&) = delete;
    IPC_Socket& operator=(const IPC_Socket&) = delete;

    /// Connects to the first endpoint of the host that answers. Throws std::runtime_error with the last reason.
    void Connect(const std::string& host, std::uint16_t port);
    /// Moves exactly `length` bytes. Throws socket_closed when the stream ends before that, buffer_is_null,
    /// std::runtime_error for other faults of the network.
    void Recv(void* buffer, std::size_t length);
    void Send(const void* buffer, std::size_t length);
    /// Ends the stream in both directions; the descriptor lives as long as the object. Throws nothing.
    void Close() noexcept;
    /// Calls `handler` on the network thread once there is something to read, or an end to see. Keeps the socket alive
    /// until then.
    void NotifyReadable(std::function<void()> handler);

    /// The endpoints of the stream. Throw socket_closed when it is not connected.
    IPC_Endpoint GetPeer() const;
    IPC_Endpoint GetLocal() const;

private:
    class IPC_Socket_Impl;
    std::unique_ptr<IPC_Socket_Impl> m_impl;
};

}  // namespace qve
