#include "server/ipc/IPC_ConnectionDescriptor.h"

#include <stdexcept>

#include "server/ipc/IPC_SocketConnectionDescriptor.h"

namespace qve {

const IPC_ConnectionDescriptor::Registry& IPC_ConnectionDescriptor::GetRegistry() {
    static const Registry registry{{IPC_SocketConnectionDescriptor::sScheme, &IPC_SocketConnectionDescriptor::Parse}};
    return registry;
}

IPC_ConnectionDescriptor::Ptr IPC_ConnectionDescriptor::Parse(const std::string& text) {
    constexpr std::string_view separator = "://";
    const std::size_t at = text.find(separator);
    if (at == std::string::npos) {
        throw std::invalid_argument("Connection string must be of form scheme://rest");
    }
    const auto scheme = GetRegistry().find(text.substr(0, at));
    if (scheme == GetRegistry().end()) throw std::invalid_argument("Unknown connection string scheme");
    return scheme->second(text.substr(at + separator.size()));
}

}  // namespace qve
