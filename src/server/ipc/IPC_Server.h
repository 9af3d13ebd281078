#pragma once

#include <memory>

#include "server/ipc/IPC_Connection.h"
#include "server/ipc/IPC_ConnectionDescriptor.h"

namespace qve {

class IPC_Whitelist;

/// A listening endpoint.
class IPC_Server {
public:
    virtual ~IPC_Server() = default;

    /// Blocks until a peer, or a failure to accept one, waits for Accept. False: the listener is gone for good.
    virtual bool WaitForConnection() const = 0;
    /// The next peer. Throws std::runtime_error when there is none, when the peer is not on the whitelist (it is
    /// dropped then), or when the process could not accept it, for lack of descriptors for instance; later calls may
    /// succeed.
    virtual std::unique_ptr<IPC_Connection> Accept() = 0;
    /// The endpoint that the server listens on, with the real port.
    virtual IPC_ConnectionDescriptor::Ptr GetDescriptor() const = 0;
    /// Closes the listener, which ends a WaitForConnection in another thread. May be called from any thread.
    virtual void Shutdown() = 0;

    /// Binds and listens on the port of `listen`; its host is ignored: peers of other machines are let in only by
    /// `allowRemote`. When `callback` is given, tells the address to the parent process that waits there. A null
    /// whitelist admits everyone.
    /// Throws std::range_error ("Unknown connection type") for descriptors of other kinds, std::runtime_error when the
    /// port is taken or the parent does not answer.
    static std::unique_ptr<IPC_Server> MakeServer(const IPC_ConnectionDescriptor::Ptr& listen, bool allowRemote,
                                                  const IPC_ConnectionDescriptor::Ptr& callback,
                                                  std::shared_ptr<const IPC_Whitelist> whitelist);
};

}  // namespace qve
