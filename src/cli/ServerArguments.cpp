#include "cli/ServerArguments.h"

#include <unistd.h>

#include <climits>

namespace qve::cli {
namespace {

/// The server program beside this one, or whatever PATH has.
std::string DefaultServer() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof(path));
    if (length > 0) {
        std::string own(path, static_cast<std::size_t>(length));
        const std::string beside = own.substr(0, own.rfind('/') + 1) + "qveserver";
        if (access(beside.c_str(), X_OK) == 0) return beside;
    }
    return "qveserver";
}

}  // namespace

ServerArguments::ServerArguments(TCLAP::CmdLine& line)
    : m_connect("", "connect", "Connect to a running server, as in quil.tcp://[::1]:27042", false, "", "descriptor",
                line),
      m_program("", "server", "The server program to start; by default qveserver beside this program", false, "",
                "path", line),
      m_log("", "server-log", "Log file of the server that is started; by default it keeps no log", false, "/dev/null",
            "path", line) {}

ServerChoice ServerArguments::Get() const {
    return {m_connect.getValue(), m_program.isSet() ? m_program.getValue() : DefaultServer(), m_log.getValue()};
}

}  // namespace qve::cli
