#pragma once

#include <cstdint>
#include <functional>
#include <istream>
#include <ostream>
#include <stdexcept>
#include <string>

#include "cli/Interrupt.h"
#include "cli/ResultWriter.h"
#include "cli/ServerArguments.h"
#include "cli/handles.h"

namespace qve::cli {

/// A call of the client library failed.
class Failure : public std::runtime_error {
public:
    Failure(QVE_Status status, const std::string& text) : std::runtime_error(text), m_status(status) {}
    QVE_Status GetStatus() const noexcept { return m_status; }

private:
    QVE_Status m_status;
};

/// A connection to a server, which is started when none was named, and stopped at the end.
class Session {
public:
    /// Throws Failure when there is no server to be had.
    Session(const ServerChoice& choice, Interrupt& interrupt);

    /// Runs one statement and prints its result, if it has one. Gives whether it had. Throws Failure.
    bool Run(const std::string& statement, ResultWriter& writer);
    /// Is told now and then, by a thread of its own, how far a statement is.
    using Watch = std::function<void(const QVE_Progress&)>;
    bool Run(const std::string& statement, ResultWriter& writer, const Watch& watch);
    /// The same for a statement whose result, if it has one, is not wanted.
    void Run(const std::string& statement);

    /// Sends `size` bytes as a database file to a path of the server. `watch` is told after each piece. Throws Failure,
    /// and std::runtime_error when there are fewer bytes.
    void Upload(std::istream& bytes, uint64_t size, const std::string& path, const Watch& watch);
    /// Fetches a database file of the server; gives its size. Throws Failure, and std::runtime_error when the bytes
    /// cannot be written.
    uint64_t Download(const std::string& path, std::ostream& bytes, const Watch& watch);

private:
    void StartServer(const ServerChoice& choice);
    void Check(QVE_Status status) const;
    void Print(QVE_Rowset& rowset, ResultWriter& writer) const;
    std::vector<ResultColumn> Describe(QVE_Rowset& rowset) const;

    Interrupt& m_interrupt;
    ServerProcessHandle m_server;  // stopped last
    ConnectionHandle m_connection;
};

}  // namespace qve::cli
