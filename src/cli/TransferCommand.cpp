#include "cli/TransferCommand.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>

#include "cli/Interrupt.h"
#include "cli/OutputFile.h"
#include "cli/ProgressBar.h"
#include "cli/Session.h"
#include "cli/open_session.h"
#include "cli/report_failure.h"

namespace qve::cli {
namespace {

constexpr const char* s_uploadMessage =
    "Sends a database, as a package file, to a path of the server, where it can be connected to at once. A folder is "
    "made a package with the statement (package \"FILE\"). The path must not hold a database. The exit status is 0 "
    "when "
    "the file is on the server's disk, 1 when that failed, 2 when there was no server.";
constexpr const char* s_downloadMessage =
    "Fetches a package file of the server. A database that is a folder there is made a package first, with the "
    "statement (package \"FILE\"). The file appears whole or not at all. The exit status is 0 when it is there, 1 when "
    "that failed, 2 when there was no server.";

std::string Done(const std::string& what, uint64_t bytes, const std::string& where) {
    return what + " " + Grouped(bytes) + " bytes to " + where + "\n";
}

Session::Watch ShowIn(ProgressBar& bar) {
    return [&bar](const QVE_Progress& progress) { bar.Show(progress); };
}

}  // namespace

TransferCommand TransferCommand::Parse(Direction direction, std::vector<std::string> arguments) {
    const bool up = direction == Direction::upload;
    TCLAP::CmdLine line(up ? s_uploadMessage : s_downloadMessage, ' ', "0.1.0");
    TCLAP::UnlabeledValueArg<std::string> source(up ? "file" : "path",
                                                 up ? "The package file" : "The package file on the server", true, "",
                                                 up ? "file" : "path", line);
    TCLAP::ValueArg<std::string> target(up ? "" : "o", up ? "to" : "output",
                                        up ? "Where it goes on the server" : "The file that is made here", true, "",
                                        "path", line);
    const ServerArguments server(line);
    line.parse(arguments);

    TransferCommand command;
    command.m_direction = direction;
    command.m_file = up ? source.getValue() : target.getValue();
    command.m_remote = up ? target.getValue() : source.getValue();
    command.m_server = server.Get();
    // A server that is started for this command sees the files that the user sees.
    if (command.m_server.connect.empty()) {
        command.m_remote = std::filesystem::absolute(command.m_remote).lexically_normal();
    }
    return command;
}

int TransferCommand::Run() {
    Interrupt interrupt;
    const std::unique_ptr<Session> session = OpenSession(m_server, interrupt);
    if (!session) return s_noServer;
    try {
        m_direction == Direction::upload ? Upload(*session) : Download(*session);
        return 0;
    } catch (const Failure& failure) {
        ReportFailure(failure, {});
    } catch (const std::runtime_error& fault) {
        std::cerr << "error: " << fault.what() << std::endl;
    }
    return s_statementFailed;
}

void TransferCommand::Upload(Session& session) const {
    if (std::filesystem::is_directory(m_file)) {
        throw std::runtime_error(m_file + " is a folder; make it a package first, as with: qve -d " + m_file +
                                 " -c '(package \"FILE\")'");
    }
    std::ifstream file(m_file, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + m_file);
    const uint64_t size = std::filesystem::file_size(m_file);
    {
        ProgressBar bar;
        session.Upload(file, size, m_remote, ShowIn(bar));
    }
    std::cerr << Done("sent", size, m_remote);
}

void TransferCommand::Download(Session& session) const {
    OutputFile file(m_file);
    uint64_t size = 0;
    {
        ProgressBar bar;
        size = session.Download(m_remote, file.GetStream(), ShowIn(bar));
    }
    file.Finish();
    std::cerr << Done("fetched", size, m_file);
}

}  // namespace qve::cli
