#pragma once

#include <memory>

#include "server/ipc/IPC_ConnectionDescriptor.h"

namespace qve {

/// The parent's side of the call-back: a listening endpoint of its own, on which a server that it starts tells where it
/// can be reached.
class IPC_ServerProxy {
public:
    virtual ~IPC_ServerProxy() = default;

    /// Where the server is to call back.
    virtual IPC_ConnectionDescriptor::Ptr GetDescriptor() const = 0;
    /// Waits for the call-back and gives the server's endpoint; null when none came in time. Throws std::runtime_error
    /// when what came makes no sense.
    virtual IPC_ConnectionDescriptor::Ptr WaitForServer(int milliseconds) = 0;
    /// Closes the stream to the server, by which it learns that its parent has left.
    virtual void Close() = 0;

    /// Listens on a free port of the loopback address.
    static std::unique_ptr<IPC_ServerProxy> MakeProxy();
};

}  // namespace qve
