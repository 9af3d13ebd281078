#pragma once

#include <map>
#include <memory>
#include <string>

namespace qve {

/// An endpoint, in the form of a connection string `scheme://rest`. Immutable; shared freely between threads.
class IPC_ConnectionDescriptor {
public:
    using Ptr = std::shared_ptr<const IPC_ConnectionDescriptor>;
    /// Reads what follows "://".
    using ParseFunction = Ptr (*)(const std::string& rest);
    using Registry = std::map<std::string, ParseFunction>;

    virtual ~IPC_ConnectionDescriptor() = default;

    /// The connection string. It lives as long as the descriptor.
    virtual const std::string& str() const = 0;

    /// Reads a connection string. Throws std::invalid_argument that tells what is wrong with it.
    static Ptr Parse(const std::string& text);

    /// The schemes that Parse knows.
    static const Registry& GetRegistry();
};

}  // namespace qve
