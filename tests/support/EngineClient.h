#pragma once

#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "client/qve.h"

namespace qve::test {

/// A value as a test sees it: null, integer (booleans are 0 and 1), double, or text (also of dates and times).
using Cell = std::variant<std::monostate, long long, double, std::string>;
using Row = std::vector<Cell>;

struct Rows {
    std::vector<std::string> columns;
    std::vector<Row> rows;
};

/// A status that is not 0, with the server's text.
class EngineError : public std::runtime_error {
public:
    EngineError(int status, const std::string& text) : std::runtime_error(text), m_status(status) {}
    int GetStatus() const { return m_status; }

private:
    int m_status;
};

/// A private qveserver, from its start to the end of the object.
class EngineProcess {
public:
    /// `config` is the path of a configuration file, or empty.
    explicit EngineProcess(const std::string& config = {}, const std::string& tempDirectory = {});
    ~EngineProcess();
    EngineProcess(const EngineProcess&) = delete;
    EngineProcess& operator=(const EngineProcess&) = delete;
    std::string GetDescriptor() const;
    int GetProcessId() const;

private:
    QVE_ServerProcess* m_process = nullptr;
};

/// One session.
class EngineClient {
public:
    explicit EngineClient(const std::string& descriptor);
    ~EngineClient();
    EngineClient(const EngineClient&) = delete;
    EngineClient& operator=(const EngineClient&) = delete;
    /// Runs a statement and fetches all its rows. Throws EngineError.
    Rows Run(const std::string& statement);
    /// The same of a text in the language of plans.
    Rows RunPlan(const std::string& plan);
    QVE_Connection* Get() const { return m_connection; }

private:
    void Check(QVE_Status status) const;
    /// Fetches all rows and closes the rowset, which may be null.
    Rows Fetch(QVE_Rowset* rowset) const;

    QVE_Connection* m_connection = nullptr;
};

/// The text of a cell, "NULL" for a null; a double in the fewest digits that read back the same.
std::string FormatCell(const Cell& cell);

}  // namespace qve::test
