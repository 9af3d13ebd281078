#pragma once

#include <string>
#include <vector>

#include "cli/ServerArguments.h"

namespace qve::cli {

enum class Format { table, csv, tsv, json, jsonl, vertical };

/// What the user asked for.
struct CommandLine {
    /// Statement texts, and files of them, in the order of the command line.
    struct Input {
        bool isFile = false;
        std::string text;  ///< the statements, or the path
    };
    std::vector<Input> inputs;  ///< none: standard input
    std::string database;       ///< absolute path of one to connect to first; empty for none
    ServerChoice server;
    Format format = Format::table;
    bool plan = false;     ///< show the plans of queries and do not run them
    bool analyze = false;  ///< run them, and show with the plan what each operator gave
    bool timing = false;
    bool stopOnError = false;

    /// Ends the process for --help, --version and for what is no option.
    static CommandLine Parse(int argc, char** argv);
};

}  // namespace qve::cli
