#include "server/ipc/IPC_SocketConnectionDescriptor.h"

#include <charconv>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace qve {
namespace {

std::string Format(const std::string& host, std::uint16_t port) {
    const bool bracketed = host.find(':') != std::string::npos;
    return IPC_SocketConnectionDescriptor::sScheme + "://" + (bracketed ? "[" + host + "]" : host) + ":" +
           std::to_string(port);
}

std::uint16_t ParsePort(std::string_view text) {
    if (text.empty()) throw std::invalid_argument("Port must be non-empty");
    if (text == "auto") return 0;
    if (text[0] < '0' || text[0] > '9') throw std::invalid_argument("Port must be numeric or \"auto\"");
    std::uint16_t port = 0;
    // What follows the digits is ignored.
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc()) throw std::invalid_argument("Port must be at most 65535");
    return port;
}

}  // namespace

const std::string IPC_SocketConnectionDescriptor::sScheme = "quil.tcp";

IPC_SocketConnectionDescriptor::IPC_SocketConnectionDescriptor(std::uint16_t port)
    : IPC_SocketConnectionDescriptor(std::string(), port) {}

IPC_SocketConnectionDescriptor::IPC_SocketConnectionDescriptor(std::string host, std::uint16_t port)
    : m_host(std::move(host)), m_port(port), m_text(Format(m_host, m_port)) {}

IPC_ConnectionDescriptor::Ptr IPC_SocketConnectionDescriptor::Parse(const std::string& rest) {
    const std::size_t colon = rest.rfind(':');
    if (colon == std::string::npos) {
        throw std::invalid_argument("Socket connection must be of form quil.tcp://[host]:port");
    }
    std::string host = rest.substr(0, colon);
    if (host.size() >= 2 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
    return std::make_shared<IPC_SocketConnectionDescriptor>(std::move(host),
                                                            ParsePort(std::string_view(rest).substr(colon + 1)));
}

}  // namespace qve
