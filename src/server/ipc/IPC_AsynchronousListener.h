#pragma once

#include <cstdint>
#include <memory>

#include "server/ipc/IPC_Network.h"

namespace qve {

class IPC_AsynchronousHandler;
class IPC_Socket;

/// Accepts peers on the network thread and keeps them until someone takes them. Notifies a handler for every peer, for
/// every spell without descriptors (accepting goes on when there are some again), and for the end.
class IPC_AsynchronousListener {
public:
    explicit IPC_AsynchronousListener(std::shared_ptr<IPC_AsynchronousHandler> handler);
    ~IPC_AsynchronousListener();
    IPC_AsynchronousListener(const IPC_AsynchronousListener&) = delete;
    IPC_AsynchronousListener& operator=(const IPC_AsynchronousListener&) = delete;

    /// Binds to every address of the machine or to the loopback address: to IPv6, else to IPv4. Port 0 takes a free
    /// one. Throws std::runtime_error.
    void ListenTo(std::uint16_t port, bool allowRemote);
    /// The next peer; null when there is none. Throws std::runtime_error, once for each spell, when the process could
    /// not accept.
    std::shared_ptr<IPC_Socket> Take();
    /// From any thread.
    void Close();
    bool IsClosed() const;
    /// The bound endpoint.
    IPC_Endpoint GetLocal() const;

private:
    class Impl;
    std::shared_ptr<Impl> m_impl;  // shared with the operations under way
};

}  // namespace qve
