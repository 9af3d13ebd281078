#pragma once

#include <iosfwd>
#include <memory>
#include <string>

#include "cli/CommandLine.h"
#include "cli/Interrupt.h"
#include "cli/Session.h"
#include "cli/StatementSplitter.h"

namespace qve::cli {

/// Runs all statements that the command line asks for, and prints results and errors.
class Program {
public:
    explicit Program(const CommandLine& commandLine) : m_commandLine(commandLine) {}
    /// Gives the exit status of the process.
    int Run();

private:
    /// Goes to the database that the command line names, if it does; false when that fails.
    bool Connect();
    /// False: no further statement is to run.
    bool RunInputs();
    bool RunStream(std::istream& stream);
    bool RunComplete(StatementSplitter& splitter, bool atEnd);
    bool RunStatement(const SourceStatement& statement);
    /// Shows the plan of a query.
    bool RunPlan(const std::string& statement, ResultWriter& writer);
    void RunTerminal();

    const CommandLine& m_commandLine;
    Interrupt m_interrupt;
    std::unique_ptr<Session> m_session;
    int m_exitStatus = 0;
};

}  // namespace qve::cli
