#pragma once

#include <stdexcept>
#include <string>

#include "cli/CommandLine.h"
#include "cli/Interrupt.h"
#include "cli/ResultWriter.h"
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
    Session(const CommandLine& commandLine, Interrupt& interrupt);

    /// Runs one statement and prints its result, if it has one. Gives whether it had. Throws Failure.
    bool Run(const std::string& statement, ResultWriter& writer);

private:
    void StartServer(const CommandLine& commandLine);
    void Check(QVE_Status status) const;
    void Print(QVE_Rowset& rowset, ResultWriter& writer) const;
    std::vector<ResultColumn> Describe(QVE_Rowset& rowset) const;

    Interrupt& m_interrupt;
    ServerProcessHandle m_server;  // stopped last
    ConnectionHandle m_connection;
};

}  // namespace qve::cli
