#include "cli/ImportCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <set>
#include <stdexcept>

#include "cli/ProgressBar.h"
#include "cli/TextRows.h"
#include "cli/open_session.h"
#include "cli/refuse_argument.h"
#include "cli/report_failure.h"

namespace qve::cli {
namespace {

constexpr const char* s_message =
    "Brings delimited text files into a new table of a database, which is made when it does not exist. Character set, "
    "delimiters, header, columns and types are found out from the text; files compressed by gzip or zstd are read as "
    "they are. Either all of the files arrive or nothing. The report tells the columns with their types, and how many "
    "fields of each were no values of its type: these are null in the table. Of several files the table has the "
    "columns "
    "that all of them have, matched by name; the report names the others. The files are read by the server. The "
    "exit status is 0 when the table is there, 1 when the import failed, 2 when there was no server.";

constexpr QVE_Status s_pathDoesNotExist = 10000;

QVE_Value TextValue(const std::string& text) {
    return {QVE_TEXT8, static_cast<uint32_t>(text.size()), text.data()};
}

QVE_Value NumberValue(const uint64_t& number) {
    return {QVE_UINT64, sizeof number, &number};
}

}  // namespace

ImportCommand ImportCommand::Parse(std::vector<std::string> arguments) {
    TCLAP::CmdLine line(s_message, ' ', "0.1.0");
    using Value = TCLAP::ValueArg<std::string>;
    TCLAP::UnlabeledMultiArg<std::string> files("file", "Text files", true, "file", line);
    Value into("", "into", "The database: a folder, made when it is not there", true, "", "path", line);
    Value table("", "table", "The new table, as schema.table or table alone, which lies in the schema \"main\"", true,
                "", "name", line);
    std::vector<std::string> yesNo{"yes", "no"};
    TCLAP::ValuesConstraint<std::string> answers(yesNo);
    Value header("", "header", "Whether the first record holds the names of the columns", false, "", &answers, line);
    Value delimiter("", "delimiter", "What separates fields: one character, or \\t", false, "", "character", line);
    Value charset("", "charset", "The character set of the text, as in windows-1252", false, "", "name", line);
    Value locale("", "locale",
                 "Whose dates are expected, as in de_DE: how months are called, and which part of a date is "
                 "first",
                 false, "", "name", line);
    Value dates("", "date-format", "How dates are written, as in \"d. MMMM y\" or \"dd/MM/yy HH:mm\"", false, "",
                "pattern", line);
    const ServerArguments server(line);
    line.parse(arguments);

    ImportCommand command;
    try {
        command.m_table = TableName::Parse(table.getValue());
    } catch (const std::invalid_argument& fault) {
        RefuseArgument(line, fault.what(), table.toString());
    }
    for (const std::string& file : files.getValue()) command.m_files.push_back(std::filesystem::absolute(file));
    command.m_database = std::filesystem::absolute(into.getValue()).lexically_normal();
    const auto property = [&](const char* key, const std::string& value) {
        command.m_properties += fmt::format("({} {})", key, QuoteText(value));
    };
    if (header.isSet()) property("header-row", header.getValue() == "yes" ? "true" : "false");
    if (delimiter.isSet()) property("field-delimiter", delimiter.getValue());
    if (charset.isSet()) property("character-set", charset.getValue());
    if (locale.isSet()) property("locale", locale.getValue());
    if (dates.isSet()) property("datetime-format", dates.getValue());
    command.m_server = server.Get();
    return command;
}

int ImportCommand::Run() {
    Interrupt interrupt;
    const std::unique_ptr<Session> session = OpenSession(m_server, interrupt);
    if (!session) return s_noServer;
    Made made;
    try {
        Prepare(*session, made);
        const auto start = std::chrono::steady_clock::now();
        Load(*session);
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        made = {};
        Report(*session, elapsed.count());
        return 0;
    } catch (const Failure& failure) {
        ReportFailure(failure, m_statement);
        TakeBack(*session, made);
        return s_statementFailed;
    }
}

void ImportCommand::Prepare(Session& session, Made& made) {
    const auto run = [&](const std::string& statement) {
        m_statement = statement;
        session.Run(statement);
    };
    try {
        run("(connect " + QuoteText(m_database) + ")");
    } catch (const Failure& failure) {
        if (failure.GetStatus() != s_pathDoesNotExist) throw;
        run("(create database " + QuoteText(m_database) + ")");
        made.database = true;
    }
    TextRows schemas;
    m_statement = "(show schemas)";
    session.Run(m_statement, schemas);
    const bool known = std::any_of(schemas.rows.begin(), schemas.rows.end(),
                                   [this](const auto& row) { return row.at(0) == m_table.schema; });
    if (known) return;
    run("(create schema " + QuoteName(m_table.schema) + ")");
    made.schema = true;
}

std::string ImportCommand::TextQuery(const std::string& file) const {
    return fmt::format("(text {}{})", QuoteText(file), m_properties.empty() ? "" : " () (" + m_properties + ")");
}

void ImportCommand::Load(Session& session) {
    std::string query = TextQuery(m_files.front());
    for (std::size_t i = 1; i < m_files.size(); ++i) query += " " + TextQuery(m_files[i]) + " ()";
    if (m_files.size() > 1) query = "(append " + query + ")";
    m_statement = fmt::format("(create table-from-query {} {})", m_table.Quote(), query);
    TextRows nothing;
    ProgressBar bar;
    session.Run(m_statement, nothing,
                bar.IsVisible() ? [&bar](const QVE_Progress& progress) { bar.Show(progress); } : Session::Watch());
}

void ImportCommand::TakeBack(Session& session, const Made& made) noexcept {
    try {
        if (made.database) {
            session.Run("(connect null)");
            session.Run("(drop database " + QuoteText(m_database) + " cascade)");
        } else if (made.schema) {
            session.Run("(drop schema " + QuoteName(m_table.schema) + ")");
        }
    } catch (const Failure& failure) {
        ReportFailure(failure, {});
    }
}

void ImportCommand::Report(Session& session, double seconds) {
    const std::string table = "(table " + m_table.Quote() + ")";
    TextRows count;
    m_statement = "(aggregate " + table + " () (([rows] (count))))";
    session.Run(m_statement, count);
    TextRows columns;
    m_statement = "(describe " + m_table.Quote() + ")";
    session.Run(m_statement, columns);
    TextRows none;  // for the properties of its columns
    m_statement = "(select " + table + " false)";
    session.Run(m_statement, none);

    const std::unique_ptr<ResultWriter> writer = MakeTableWriter(std::cout, false);
    writer->Begin({{"column", QVE_TEXT8}, {"type", QVE_TEXT8}, {"rejected", QVE_UINT64}, {"first in row", QVE_UINT64}});
    for (std::size_t i = 0; i < columns.rows.size() && i < none.columns.size(); ++i) {
        const uint64_t row = none.columns[i].firstRejected + 1;  // as readers count, without the header
        const uint64_t rejected = none.columns[i].rejected;
        const QVE_Value first = rejected ? NumberValue(row) : QVE_Value{QVE_UINT64 | QVE_NULL, 0, nullptr};
        const QVE_Value values[] = {TextValue(columns.rows[i].at(0)), TextValue(columns.rows[i].at(1)),
                                    NumberValue(rejected), first};
        writer->Row(values);
    }
    writer->End();
    ReportLeftOut(session);
    std::cout << fmt::format("{} rows and {} columns in {}.{} of {}, {:.2f} s\n",
                             Grouped(count.rows.empty() ? 0 : std::stoull(count.rows[0].at(0))), columns.rows.size(),
                             m_table.schema, m_table.table, m_database, seconds)
              << std::flush;
}

void ImportCommand::ReportLeftOut(Session& session) {
    if (m_files.size() < 2) return;
    std::vector<std::set<std::string>> names;
    for (const std::string& file : m_files) {
        TextRows none;  // for its columns
        m_statement = "(select " + TextQuery(file) + " false)";
        session.Run(m_statement, none);
        std::set<std::string>& known = names.emplace_back();
        for (const ResultColumn& column : none.columns) known.insert(column.name);
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        for (const std::string& name : names[i]) {
            const auto lacking =
                std::find_if(names.begin(), names.end(), [&](const auto& others) { return others.count(name) == 0; });
            if (lacking == names.end()) continue;
            std::cout << fmt::format("left out: {} of {}, which {} lacks\n", name, m_files[i],
                                     m_files[static_cast<std::size_t>(lacking - names.begin())]);
        }
    }
}

}  // namespace qve::cli
