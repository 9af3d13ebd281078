#pragma once

#include <string>
#include <vector>

#include "cli/ServerArguments.h"

namespace qve::cli {

/// `qve check DATABASE`: verifies a database, and says in words and by its exit status what came of it.
class CheckCommand {
public:
    /// The words of the command line, the program's name first. Ends the process for --help and for what is no option.
    static CheckCommand Parse(std::vector<std::string> arguments);
    /// Gives the exit status of the process.
    int Run();

private:
    std::string m_database;  // absolute
    std::string m_salvage;   // absolute; empty for none
    bool m_temp = false;
    ServerChoice m_server;
};

}  // namespace qve::cli
