#include "cli/Program.h"

#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iostream>
#include <sstream>

#include "cli/Prompt.h"
#include "cli/open_session.h"
#include "cli/report_failure.h"
#include "cli/vql_text.h"

namespace qve::cli {
namespace {

constexpr const char* s_help =
    "A statement is a list in parentheses and may take several lines, for instance\n"
    "  (show tables)\n"
    "  (top (select (table [s].[t]) (> [price] 10)) ([price]) 5)\n"
    "Ctrl-C cancels the running statement, or gives up the one being typed.\n"
    "help prints this, quit leaves, as does Ctrl-D.\n";

std::string Trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

}  // namespace

int Program::Run() {
    m_session = OpenSession(m_commandLine.server, m_interrupt);
    if (!m_session) return s_noServer;
    if (!Connect()) return s_statementFailed;
    RunInputs();
    std::cout.flush();
    if (!std::cout && m_exitStatus == 0) m_exitStatus = s_statementFailed;
    return m_exitStatus;
}

bool Program::Connect() {
    if (m_commandLine.database.empty()) return true;
    try {
        m_session->Run("(connect " + QuoteText(m_commandLine.database) + ")");
        return true;
    } catch (const Failure& failure) {
        ReportFailure({failure.GetStatus(), failure.what() + (" (" + m_commandLine.database + ")")}, {});
        return false;
    }
}

bool Program::RunInputs() {
    if (m_commandLine.inputs.empty()) {
        if (!isatty(STDIN_FILENO)) return RunStream(std::cin);
        RunTerminal();
        return true;
    }
    for (const CommandLine::Input& input : m_commandLine.inputs) {
        bool goOn = true;
        if (!input.isFile) {
            std::istringstream text(input.text);
            goOn = RunStream(text);
        } else if (input.text == "-") {
            goOn = RunStream(std::cin);
        } else {
            std::ifstream file(input.text);
            if (!file) {
                std::cerr << "error: cannot read " << input.text << std::endl;
                m_exitStatus = s_statementFailed;
                return false;
            }
            goOn = RunStream(file);
        }
        if (!goOn) return false;
    }
    return true;
}

// Line by line: whoever writes into a pipe sees the result of a statement before the next one.
bool Program::RunStream(std::istream& stream) {
    StatementSplitter splitter;
    std::string line;
    while (std::getline(stream, line)) {
        splitter.Feed(line);
        if (!stream.eof()) splitter.Feed("\n");
        if (!RunComplete(splitter, false)) return false;
    }
    return RunComplete(splitter, true);
}

bool Program::RunComplete(StatementSplitter& splitter, bool atEnd) {
    while (const auto statement = atEnd ? splitter.TakeRest() : splitter.Next()) {
        if (!RunStatement(*statement)) return false;
    }
    return true;
}

bool Program::RunStatement(const SourceStatement& statement) {
    if (Interrupt::TakeRequest()) {
        m_exitStatus = s_interrupted;
        return false;
    }
    const auto start = std::chrono::steady_clock::now();
    bool succeeded = false;
    try {
        const std::unique_ptr<ResultWriter> writer = ResultWriter::Make(m_commandLine.format, std::cout);
        const bool hasResult =
            m_commandLine.plan ? RunPlan(statement.text, *writer) : m_session->Run(statement.text, *writer);
        if (!hasResult && m_commandLine.format == Format::table) std::cout << "ok\n";
        succeeded = true;
    } catch (const Failure& failure) {
        ReportFailure(failure, statement.text, statement.line, statement.column);
        m_exitStatus = s_statementFailed;
    }
    std::cout.flush();
    if (m_commandLine.timing) {
        const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
        std::cerr << "time: " << elapsed.count() << " ms" << std::endl;
    }
    if (!std::cout) return false;  // nobody reads any more
    return succeeded || !m_commandLine.stopOnError;
}

// What has no plan, as connecting to a database, runs as it is.
bool Program::RunPlan(const std::string& statement, ResultWriter& writer) {
    constexpr QVE_Status hasNoPlan = 48037;
    try {
        return m_session->Run((m_commandLine.analyze ? "(explain analyze " : "(explain ") + statement + "\n)", writer);
    } catch (const Failure& failure) {
        if (failure.GetStatus() != hasNoPlan) throw;
    }
    return m_session->Run(statement, writer);
}

void Program::RunTerminal() {
    Prompt prompt;
    StatementSplitter splitter;
    while (true) {
        const bool isInside = splitter.IsInside();
        bool interrupted = false;
        const auto line = prompt.ReadLine(isInside ? "...> " : "qve> ", interrupted);
        if (interrupted) {
            splitter = StatementSplitter();
            continue;
        }
        if (!line) break;
        const std::string word = Trimmed(*line);
        if (!isInside && (word == "quit" || word == "exit")) break;
        if (!isInside && word == "help") {
            std::cout << s_help << std::flush;
            continue;
        }
        if (!word.empty()) prompt.Remember(*line);
        splitter.Feed(*line);
        if (!RunComplete(splitter, false)) break;
        // Each statement counts its lines from its own start.
        if (!splitter.IsInside()) splitter = StatementSplitter();
    }
    std::cout << std::endl;
}

}  // namespace qve::cli
