#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace boost::asio {
class io_context;
}

namespace qve {

class IPC_Socket;

/// A resolved TCP address.
struct IPC_Endpoint {
    std::string address;  ///< numeric, without brackets
    std::uint16_t port = 0;
};

/// The process's one event loop for sockets, and the thread that turns it. The thread starts with the first use, and is
/// joined when the process exits.
class IPC_Network {
public:
    static IPC_Network& GetInstance();

    /// A socket that is not connected yet.
    std::shared_ptr<IPC_Socket> CreateNetworkSocket();
    /// The addresses of a host; an empty host is this machine. Throws std::runtime_error when there are none. Blocks.
    std::vector<IPC_Endpoint> Resolve(const std::string& host, std::uint16_t port);
    /// The loop itself, for handlers of this layer.
    boost::asio::io_context& GetService();

private:
    IPC_Network();
    ~IPC_Network();

    class Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace qve
