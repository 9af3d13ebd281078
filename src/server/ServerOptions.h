#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qve {

/// The command line of the server. Texts are UTF-8.
struct ServerOptions {
    std::string log;
    std::string listen;
    std::string callback;
    std::string config;
    bool configGiven = false;  ///< on the command line, and not by default
    bool debugger = false;
    bool metricsEnable = false;
    std::optional<std::string> metricsSet;  ///< these, when they were given
    std::optional<std::string> metricsClear;
    std::optional<std::string> metricsOut;
    std::optional<std::string> metricsParameters;

    /// Reads the command line, whose first entry is the program. Ends the process for --help, --version and for what is
    /// no option.
    static ServerOptions Parse(const std::vector<std::string>& arguments);
};

}  // namespace qve
