#include "cli/ExportCommand.h"

#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>

#include "cli/Interrupt.h"
#include "cli/OutputFile.h"
#include "cli/ProgressBar.h"
#include "cli/Session.h"
#include "cli/open_session.h"
#include "cli/refuse_argument.h"
#include "cli/report_failure.h"
#include "cli/vql_text.h"

namespace qve::cli {
namespace {

constexpr const char* s_message =
    "Writes the result of a statement, or the rows of a table, as CSV, TSV or JSON lines. A file appears whole or not "
    "at all. In CSV a null is nothing and an empty text \"\"; in TSV a null is \\N. The exit status is 0 when all rows "
    "are written, 1 when the statement or the writing failed, 2 when there was no server.";

const std::map<std::string, Format> s_formats{
    {"csv", Format::csv}, {"tsv", Format::tsv}, {"jsonl", Format::jsonl}, {"json", Format::json}};

/// As the name of the file says; CSV where it says nothing.
Format FormatOf(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension();
    if (extension == ".ndjson") return Format::jsonl;
    const auto known = extension.empty() ? s_formats.end() : s_formats.find(extension.substr(1));
    return known == s_formats.end() ? Format::csv : known->second;
}

/// Counts the rows that go to another writer, and shows how many there are.
class CountingWriter : public ResultWriter {
public:
    CountingWriter(ResultWriter& writer, ProgressBar& bar) : m_writer(writer), m_bar(bar) {}

    void Begin(const std::vector<ResultColumn>& columns) override { m_writer.Begin(columns); }
    void Row(const QVE_Value* values) override {
        constexpr uint64_t step = 1 << 14;
        m_writer.Row(values);
        if (++m_rows % step == 0) m_bar.Show({m_rows, ~uint64_t{0}, ~uint64_t{0}, ~uint64_t{0}});
    }
    void End() override { m_writer.End(); }
    uint64_t GetRows() const { return m_rows; }

private:
    ResultWriter& m_writer;
    ProgressBar& m_bar;
    uint64_t m_rows = 0;
};

}  // namespace

ExportCommand ExportCommand::Parse(std::vector<std::string> arguments) {
    TCLAP::CmdLine line(s_message, ' ', "0.1.0");
    using Value = TCLAP::ValueArg<std::string>;
    TCLAP::UnlabeledValueArg<std::string> statement("statement", "The statement whose result is written", false, "",
                                                    "statement", line);
    Value from("", "from", "The database that the statement is about", true, "", "path", line);
    Value table("", "table", "In place of a statement: a table, as schema.table or table alone", false, "", "name",
                line);
    std::vector<std::string> names;
    for (const auto& [name, format] : s_formats) names.push_back(name);
    TCLAP::ValuesConstraint<std::string> formats(names);
    Value format("", "format", "By default as the name of the file ends, else csv", false, "", &formats, line);
    Value output("o", "output", "The file; by default standard output", false, "", "path", line);
    const ServerArguments server(line);
    line.parse(arguments);

    ExportCommand command;
    if (statement.isSet() == table.isSet()) RefuseArgument(line, "give either a statement or --table", "statement");
    command.m_statement = statement.getValue();
    if (table.isSet()) {
        try {
            command.m_statement = "(table " + TableName::Parse(table.getValue()).Quote() + ")";
        } catch (const std::invalid_argument& fault) {
            RefuseArgument(line, fault.what(), table.toString());
        }
    }
    command.m_database = std::filesystem::absolute(from.getValue()).lexically_normal();
    command.m_output = output.getValue();
    command.m_format = format.isSet() ? s_formats.at(format.getValue()) : FormatOf(command.m_output);
    command.m_server = server.Get();
    return command;
}

int ExportCommand::Run() {
    Interrupt interrupt;
    const std::unique_ptr<Session> session = OpenSession(m_server, interrupt);
    if (!session) return s_noServer;
    try {
        session->Run("(connect " + QuoteText(m_database) + ")");
        Export(*session);
        return 0;
    } catch (const Failure& failure) {
        ReportFailure(failure, m_statement);
    } catch (const std::runtime_error& fault) {
        std::cerr << "error: " << fault.what() << std::endl;
    }
    return s_statementFailed;
}

void ExportCommand::Export(Session& session) {
    if (m_output.empty()) {
        Write(session, std::cout);
        std::cout.flush();
        if (!std::cout) throw std::runtime_error("cannot write to standard output");
        return;
    }
    OutputFile file(m_output);
    Write(session, file.GetStream());
    file.Finish();
}

void ExportCommand::Write(Session& session, std::ostream& output) {
    const std::unique_ptr<ResultWriter> writer = ResultWriter::Make(m_format, output);
    bool hasResult = false;
    uint64_t rows = 0;
    {
        ProgressBar bar;
        CountingWriter counting(*writer, bar);
        hasResult = session.Run(m_statement, counting);
        rows = counting.GetRows();
    }
    if (!hasResult) throw std::runtime_error("the statement has no result");
    if (!m_output.empty()) std::cerr << Grouped(rows) << " rows in " << m_output << std::endl;
}

}  // namespace qve::cli
