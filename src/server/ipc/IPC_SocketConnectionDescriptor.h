#pragma once

#include <cstdint>
#include <string>

#include "server/ipc/IPC_ConnectionDescriptor.h"

namespace qve {

/// A TCP endpoint, as in "quil.tcp://[::1]:27042". The brackets are not part of the host; an empty host means every
/// default address, port 0 (written "auto") any free port.
class IPC_SocketConnectionDescriptor : public IPC_ConnectionDescriptor {
public:
    static const std::string sScheme;

    explicit IPC_SocketConnectionDescriptor(std::uint16_t port);
    IPC_SocketConnectionDescriptor(std::string host, std::uint16_t port);

    /// Reads `[host]:port`. Throws std::invalid_argument.
    static Ptr Parse(const std::string& rest);

    const std::string& str() const override { return m_text; }
    const std::string& GetHost() const noexcept { return m_host; }
    std::uint16_t GetPort() const noexcept { return m_port; }

private:
    std::string m_host;
    std::uint16_t m_port;
    std::string m_text;
};

}  // namespace qve
