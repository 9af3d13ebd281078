#include "cli/CommandLine.h"

#include <tclap/CmdLine.h>

#include <filesystem>
#include <map>

namespace qve::cli {
namespace {

constexpr const char* s_message =
    "Runs statements on a qveserver and prints their results. Statements come from -c and -f, in their order, else "
    "from "
    "standard input; a terminal gets a prompt with line editing and history. Without --connect a private server is "
    "started in the working directory and stopped at the end. Ctrl-C cancels the running statement and not the client. "
    "An error prints its status number and text, and for a mistake in the statement the line, the column and the "
    "place. "
    "The exit status is 0 only when every statement succeeded, 1 when one failed, 2 when there was no server, and 130 "
    "when Ctrl-C came between statements. Three words make it another program, each with a --help of its own: qve "
    "import "
    "brings text files into a table, qve export writes the result of a statement to a file, qve check verifies a "
    "database, qve upload and qve download move one to a server and back.";

const std::map<std::string, Format> s_formats{{"table", Format::table}, {"csv", Format::csv},
                                              {"tsv", Format::tsv},     {"json", Format::json},
                                              {"jsonl", Format::jsonl}, {"vertical", Format::vertical}};

/// TCLAP keeps the values of each option together; the command line knows their order.
std::vector<CommandLine::Input> InputsInOrder(int argc, char** argv, const std::vector<std::string>& commands,
                                              const std::vector<std::string>& files) {
    std::vector<CommandLine::Input> inputs;
    std::size_t command = 0;
    std::size_t file = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        const bool isCommand = argument == "-c" || argument == "--command";
        const bool isFile = argument == "-f" || argument == "--file";
        if (isCommand && command < commands.size()) {
            inputs.push_back({false, commands[command++]});
        } else if (isFile && file < files.size()) {
            inputs.push_back({true, files[file++]});
        } else {
            continue;
        }
        ++i;  // its value, which may look like an option
    }
    return inputs;
}

}  // namespace

CommandLine CommandLine::Parse(int argc, char** argv) {
    TCLAP::CmdLine line(s_message, ' ', "0.1.0");
    using Value = TCLAP::ValueArg<std::string>;
    TCLAP::MultiArg<std::string> commands("c", "command", "Run these statements; may be given several times", false,
                                          "statements", line);
    TCLAP::MultiArg<std::string> files("f", "file", "Run the statements of a file, \"-\" for standard input", false,
                                       "path", line);
    Value database("d", "database", "Connect to this database first: a folder or a package", false, "", "path", line);
    const ServerArguments server(line);
    std::vector<std::string> names;
    for (const auto& [name, format] : s_formats) names.push_back(name);
    TCLAP::ValuesConstraint<std::string> formats(names);
    Value format("", "format", "How results are printed; by default as a table", false, "table", &formats, line);
    TCLAP::SwitchArg plan("", "plan", "Show the plan of each query in place of its rows", line);
    TCLAP::SwitchArg analyze("", "analyze", "With the plan, run it: rows and milliseconds of each operator", line);
    TCLAP::SwitchArg timing("", "timing", "Print how long each statement took, to standard error", line);
    TCLAP::SwitchArg stop("", "stop-on-error", "Leave at the first statement that fails", line);
    line.parse(argc, argv);

    CommandLine result;
    result.inputs = InputsInOrder(argc, argv, commands.getValue(), files.getValue());
    if (database.isSet()) result.database = std::filesystem::absolute(database.getValue()).lexically_normal();
    result.server = server.Get();
    result.format = s_formats.at(format.getValue());
    result.analyze = analyze.getValue();
    result.plan = plan.getValue() || result.analyze;
    result.timing = timing.getValue();
    result.stopOnError = stop.getValue();
    return result;
}

}  // namespace qve::cli
