#pragma once

#include <memory>

namespace qve {

class IPC_AsynchronousHandler;
class IPC_Socket;

/// Notifies a handler once a socket has something to read or has come to its end.
class IPC_AsynchronousReader {
public:
    IPC_AsynchronousReader(std::shared_ptr<IPC_Socket> socket, std::shared_ptr<IPC_AsynchronousHandler> handler);

    /// Asks for one notification; harmless while one is outstanding. From one thread.
    void Start();
    /// The outstanding notification has come.
    void Finish() { m_outstanding = false; }

private:
    std::shared_ptr<IPC_Socket> m_socket;
    std::shared_ptr<IPC_AsynchronousHandler> m_handler;
    bool m_outstanding = false;
};

}  // namespace qve
