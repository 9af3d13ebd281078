#pragma once

#include <string>
#include <vector>

namespace qve::test {

/// One entry of a query test file.
struct QueryStep {
    enum class Kind { load, statement, query, error };
    Kind kind;
    int line = 0;          ///< where it stands in the file, from 1
    std::string text;      ///< the statement, or for load the table's name
    bool sorted = false;   ///< the order of the rows does not matter
    bool oracle = false;   ///< `expected` is SQL, whose rows are expected
    std::string expected;  ///< rows, one a line, cells separated by " | "; or SQL
    int status = 0;        ///< of an error; 0 for any
    std::string message;   ///< of an error; empty for any
};

/// Reads a query test file. Throws std::runtime_error with file and line for what it does not understand.
std::vector<QueryStep> ReadQueryFile(const std::string& path);

}  // namespace qve::test
