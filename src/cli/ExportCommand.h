#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "cli/ResultWriter.h"
#include "cli/ServerArguments.h"

namespace qve::cli {

class Session;

/// `qve export STATEMENT --from DATABASE`: writes the result of a statement, or a whole table, to a file.
class ExportCommand {
public:
    /// The words of the command line, the program's name first. Ends the process for --help and for what is no option.
    static ExportCommand Parse(std::vector<std::string> arguments);
    /// Gives the exit status of the process.
    int Run();

private:
    void Export(Session& session);
    void Write(Session& session, std::ostream& output);

    std::string m_statement;
    std::string m_database;  // absolute
    std::string m_output;    // empty: standard output
    Format m_format = Format::csv;
    ServerChoice m_server;
};

}  // namespace qve::cli
