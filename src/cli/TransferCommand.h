#pragma once

#include <string>
#include <vector>

#include "cli/ServerArguments.h"

namespace qve::cli {

class Session;

/// `qve upload FILE --to PATH` and `qve download PATH --output FILE`: whole databases, as package files, to the server
/// and from it.
class TransferCommand {
public:
    enum class Direction { upload, download };

    /// The words of the command line, the program's name first. Ends the process for --help and for what is no option.
    static TransferCommand Parse(Direction direction, std::vector<std::string> arguments);
    /// Gives the exit status of the process.
    int Run();

private:
    void Upload(Session& session) const;
    void Download(Session& session) const;

    Direction m_direction = Direction::upload;
    std::string m_file;    // here
    std::string m_remote;  // path on the server
    ServerChoice m_server;
};

}  // namespace qve::cli
