#pragma once

#include <random>
#include <string>
#include <vector>

#include "tests/e2e/RandomQuery.h"

namespace qve::test {

/// A table of random rows: of none, one, or some thousands, with nulls, keys that are all equal or all different, and
/// sorted ones.
struct RandomTable {
    RandomSource source;
    std::string schema;       ///< the columns as the engine's text query takes them
    std::string definitions;  ///< and as a statement that creates an empty table does
    std::string sql;          ///< the statement that makes the table in SQLite
    std::string csv;          ///< the rows, below a header
};

/// The tables of one round, whose names begin with `prefix`.
std::vector<RandomTable> MakeRandomTables(const std::string& prefix, std::mt19937& random);

}  // namespace qve::test
