#pragma once

#include <string>
#include <vector>

#include "cli/Interrupt.h"
#include "cli/ServerArguments.h"
#include "cli/Session.h"
#include "cli/vql_text.h"

namespace qve::cli {

/// `qve import FILE... --into DATABASE --table NAME`: makes a table of text files, and reports what came of it.
class ImportCommand {
public:
    /// The words of the command line, the program's name first. Ends the process for --help and for what is no option.
    static ImportCommand Parse(std::vector<std::string> arguments);
    /// Gives the exit status of the process.
    int Run();

private:
    /// What was made on the way, and goes again when the import fails.
    struct Made {
        bool database = false;
        bool schema = false;
    };

    void Execute(const std::string& statement);
    void Prepare(Session& session, Made& made);
    void Load(Session& session);
    void TakeBack(Session& session, const Made& made) noexcept;
    void Report(Session& session, double seconds);
    /// Says which columns of the files have no place in the table, since another file lacks them.
    void ReportLeftOut(Session& session);
    std::string TextQuery(const std::string& file) const;

    std::vector<std::string> m_files;  // absolute
    std::string m_database;            // absolute
    TableName m_table;
    std::string m_properties;  // of the format, in the language: "((key "value") ...)"
    ServerChoice m_server;

    std::string m_statement;  // the last one, for messages
};

}  // namespace qve::cli
