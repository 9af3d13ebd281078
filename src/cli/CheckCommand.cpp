#include "cli/CheckCommand.h"

#include <filesystem>
#include <iostream>
#include <map>
#include <memory>

#include "cli/Interrupt.h"
#include "cli/ProgressBar.h"
#include "cli/Session.h"
#include "cli/TextRows.h"
#include "cli/open_session.h"
#include "cli/report_failure.h"
#include "cli/vql_text.h"

namespace qve::cli {
namespace {

constexpr const char* s_message =
    "Verifies a database, a folder or a package file: its catalog against its files, every cell of every column, every "
    "entry of the dictionaries. It changes nothing unless it is told to. The exit status is 0 when the database is "
    "sound, 1 when it is damaged, 2 when there was no server.";

/// How the kinds of findings read.
const std::map<std::string, std::string> s_words{
    {"damage", "damaged"}, {"leftover", "left over"}, {"removed", "removed"}, {"salvaged", "salvaged"}};

std::string Counted(std::size_t count, const std::string& what) {
    return count == 0 ? std::string() : ", " + std::to_string(count) + " " + what;
}

}  // namespace

CheckCommand CheckCommand::Parse(std::vector<std::string> arguments) {
    TCLAP::CmdLine line(s_message, ' ', "0.1.0");
    TCLAP::UnlabeledValueArg<std::string> database("database", "The database: a folder or a package file", true, "",
                                                   "database", line);
    TCLAP::SwitchArg temp("", "temp",
                          "Remove what dead processes left: files in the database that its catalog does not name, "
                          "remains of dropped databases beside it, and temporary files",
                          line);
    TCLAP::ValueArg<std::string> salvage("", "salvage", "Copy every table that can be read to a new database", false,
                                         "", "path", line);
    const ServerArguments server(line);
    line.parse(arguments);

    const auto absolute = [](const std::string& path) {
        const std::string normal = std::filesystem::absolute(path).lexically_normal();
        return normal.size() > 1 && normal.back() == '/' ? normal.substr(0, normal.size() - 1) : normal;
    };
    CheckCommand command;
    command.m_database = absolute(database.getValue());
    if (salvage.isSet()) command.m_salvage = absolute(salvage.getValue());
    command.m_temp = temp.getValue();
    command.m_server = server.Get();
    return command;
}

int CheckCommand::Run() {
    Interrupt interrupt;
    const std::unique_ptr<Session> session = OpenSession(m_server, interrupt);
    if (!session) return s_noServer;
    std::string statement = "(check database " + QuoteText(m_database);
    if (m_temp) statement += " temp";
    if (!m_salvage.empty()) statement += " salvage " + QuoteText(m_salvage);
    statement += ")";
    TextRows findings;
    try {
        ProgressBar bar;
        session->Run(statement, findings,
                     bar.IsVisible() ? [&bar](const QVE_Progress& progress) { bar.Show(progress); } : Session::Watch());
    } catch (const Failure& failure) {
        ReportFailure(failure, statement);
        return s_statementFailed;
    }
    std::map<std::string, std::size_t> counts;
    for (const auto& finding : findings.rows) {
        const std::string& kind = finding.at(0);
        ++counts[kind];
        if (&finding == &findings.rows.back()) break;  // what was looked at, for the last line
        const auto word = s_words.find(kind);
        std::cout << (word == s_words.end() ? "note" : word->second) << ": " << finding.at(1)
                  << (finding.at(2).empty() ? "" : ": ") << finding.at(2) << "\n";
    }
    const bool sound = counts["damage"] == 0;
    std::cout << m_database << ": " << findings.rows.back().at(2) << ", " << (sound ? "sound" : "damaged")
              << Counted(counts["damage"], "damaged") << Counted(counts["leftover"], "left over")
              << Counted(counts["removed"], "removed") << Counted(counts["salvaged"], "salvaged") << std::endl;
    return sound ? 0 : s_statementFailed;
}

}  // namespace qve::cli
