#pragma once

#include <memory>
#include <string>

namespace qve {

/// What to start, and how. Empty texts leave the option out.
struct QVE_ServerOptions {
    std::string path;                              ///< of the program; looked up in PATH when it holds no "/"
    std::string listen = "quil.tcp://[::1]:auto";  ///< connection string
    std::string log;                               ///< path of the log file
    std::string config;                            ///< path of the configuration file
    std::string tempDirectory;                     ///< TMPDIR of the server
    bool desktop = false;
};

/// A server that this process starts for itself. One thread at a time.
class QVE_ServerProcess2 {
public:
    QVE_ServerProcess2();
    /// Stops the server when it runs.
    ~QVE_ServerProcess2();

    /// Starts the server and waits until it has called back, for 30 seconds at most. Throws QVE_LogicError (40515,
    /// "server process already started"), QVE_RuntimeError (40513) when it cannot be started, (40514, "server did not
    /// call us back") when it does not call, or ends before.
    void Start(const QVE_ServerOptions& options);
    /// Ends the server, by force when it does not leave within half a second. Throws QVE_LogicError (40512, "server
    /// process not started").
    void Stop();
    /// Whether the server was started and has not ended.
    bool IsAlive();
    /// Where it listens. Throws 40512.
    const std::string& GetServerDescriptor() const;
    /// Throws 40512.
    int GetProcessId() const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace qve
