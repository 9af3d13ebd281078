#include <exception>
#include <iostream>
#include <string_view>
#include <vector>

#include "cli/CheckCommand.h"
#include "cli/CommandLine.h"
#include "cli/ExportCommand.h"
#include "cli/ImportCommand.h"
#include "cli/Program.h"
#include "cli/TransferCommand.h"
#include "cli/report_failure.h"

namespace {

int Run(int argc, char** argv) {
    using namespace qve::cli;
    const std::string_view word = argc > 1 ? argv[1] : "";
    // A form of its own has its own options: its two words stand for the program's name.
    std::vector<std::string> arguments(argv + (argc > 1), argv + argc);
    const bool isWord =
        word == "import" || word == "export" || word == "check" || word == "upload" || word == "download";
    if (isWord) {
        arguments.front() = argv[0] + (" " + arguments.front());
    }
    if (word == "import") return ImportCommand::Parse(std::move(arguments)).Run();
    if (word == "export") return ExportCommand::Parse(std::move(arguments)).Run();
    if (word == "check") return CheckCommand::Parse(std::move(arguments)).Run();
    if (word == "upload" || word == "download") {
        using Direction = TransferCommand::Direction;
        const Direction direction = word == "upload" ? Direction::upload : Direction::download;
        return TransferCommand::Parse(direction, std::move(arguments)).Run();
    }
    const CommandLine commandLine = CommandLine::Parse(argc, argv);
    return Program(commandLine).Run();
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& exception) {
        std::cerr << "error: " << exception.what() << std::endl;
        return qve::cli::s_noServer;
    }
}
