#pragma once

#include <tclap/CmdLine.h>

#include <string>

namespace qve::cli {

/// Which server to talk to.
struct ServerChoice {
    std::string connect;  ///< connection string of a running server; empty: start one
    std::string program;  ///< path of the server program
    std::string log;      ///< log file of a server that is started
};

/// The options that choose a server; every form of the program has them.
class ServerArguments {
public:
    explicit ServerArguments(TCLAP::CmdLine& line);
    /// After the line was parsed.
    ServerChoice Get() const;

private:
    TCLAP::ValueArg<std::string> m_connect;
    TCLAP::ValueArg<std::string> m_program;
    TCLAP::ValueArg<std::string> m_log;
};

}  // namespace qve::cli
