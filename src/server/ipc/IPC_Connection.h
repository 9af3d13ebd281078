#pragma once

#include <cstddef>
#include <memory>
#include <stdexcept>

#include "server/ipc/IPC_ConnectionDescriptor.h"

namespace qve {

/// A stream to a peer. Calls block. One thread may read while another writes, and any thread may disconnect, which ends
/// the blocked calls of the others; two readers or two writers at once are the caller's mistake.
class IPC_Connection {
public:
    /// The peer closed the stream, or Disconnect ended it.
    class ipc_connection_closed : public std::runtime_error {
    public:
        using std::runtime_error::runtime_error;
    };

    virtual ~IPC_Connection() = default;

    /// Reads exactly `size` bytes. Throws ipc_connection_closed when the stream ends before that.
    virtual void Read(void* data, std::size_t size) = 0;
    /// Reads one 32-bit word in the byte order of the host.
    virtual void Read(unsigned& word) = 0;
    /// Writes all `size` bytes. Throws ipc_connection_closed, or std::runtime_error with the reason.
    virtual void Write(const void* data, std::size_t size) = 0;
    virtual void Write(unsigned word) = 0;
    /// Ends the stream in both directions. Harmless when it has ended already; throws nothing.
    virtual void Disconnect() = 0;
    /// The endpoint of the peer.
    virtual IPC_ConnectionDescriptor::Ptr GetDescriptor() const = 0;
    /// Reads and drops `size` bytes.
    virtual void Skip(std::size_t size) = 0;
    /// Waits up to `milliseconds` for bytes to read; the end of the stream counts as readable. Negative: without end.
    virtual bool IsReadPending(int milliseconds) = 0;

    /// Connects to a listening server. Throws std::range_error ("Unknown connection type") for a descriptor that is no
    /// socket's, std::runtime_error when nobody answers.
    static std::unique_ptr<IPC_Connection> Connect(const IPC_ConnectionDescriptor& descriptor);
};

}  // namespace qve
