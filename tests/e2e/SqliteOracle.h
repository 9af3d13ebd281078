#pragma once

#include <string>

#include "tests/support/EngineClient.h"

struct sqlite3;

namespace qve::test {

/// The same tables in SQLite, in memory. Throws std::runtime_error with SQLite's message.
class SqliteOracle {
public:
    SqliteOracle();
    ~SqliteOracle();
    SqliteOracle(const SqliteOracle&) = delete;
    SqliteOracle& operator=(const SqliteOracle&) = delete;
    /// Makes a table by `folder`/`name`.sql and fills it from `folder`/`name`.csv, whose first row is a header. An
    /// empty field is null, "true" and "false" are 1 and 0.
    void Load(const std::string& folder, const std::string& name);
    Rows Run(const std::string& sql);
    /// Ends a Run that takes more than about this many steps of SQLite's machine, with an error; 0 for no limit.
    void SetStepLimit(unsigned steps);

private:
    void Check(int code) const;

    sqlite3* m_database = nullptr;
};

}  // namespace qve::test
