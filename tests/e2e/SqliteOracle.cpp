#include "tests/e2e/SqliteOracle.h"

#include <sqlite3.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>

namespace qve::test {
namespace {

using Field = std::optional<std::string>;

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("no such file: " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The records of a comma-separated file; an empty field without quotes is absent.
std::vector<std::vector<Field>> ReadCsv(const std::string& text) {
    std::vector<std::vector<Field>> records(1);
    for (size_t i = 0; i < text.size();) {
        std::string field;
        const bool quoted = text[i] == '"';
        if (quoted) {
            for (++i; i < text.size(); ++i) {
                if (text[i] != '"') {
                    field += text[i];
                } else if (i + 1 < text.size() && text[i + 1] == '"') {
                    field += text[i++];
                } else {
                    break;
                }
            }
            ++i;
        }
        while (i < text.size() && text[i] != ',' && text[i] != '\n') field += text[i++];
        records.back().push_back(quoted || !field.empty() ? Field(field) : std::nullopt);
        if (i < text.size() && text[i] == '\n' && i + 1 < text.size()) records.emplace_back();
        ++i;
    }
    return records;
}

using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

}  // namespace

SqliteOracle::SqliteOracle() {
    Check(sqlite3_open(":memory:", &m_database));
}

SqliteOracle::~SqliteOracle() {
    sqlite3_close(m_database);
}

void SqliteOracle::Check(int code) const {
    if (code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE) return;
    throw std::runtime_error(std::string("sqlite: ") + sqlite3_errmsg(m_database));
}

void SqliteOracle::Load(const std::string& folder, const std::string& name) {
    Check(sqlite3_exec(m_database, ReadFile(folder + "/" + name + ".sql").c_str(), nullptr, nullptr, nullptr));
    const auto records = ReadCsv(ReadFile(folder + "/" + name + ".csv"));
    std::string insert = "insert into " + name + " values (?";
    for (size_t i = 1; i < records.front().size(); ++i) insert += ",?";
    sqlite3_stmt* raw = nullptr;
    Check(sqlite3_prepare_v2(m_database, (insert + ")").c_str(), -1, &raw, nullptr));
    const Statement statement(raw, sqlite3_finalize);
    for (size_t row = 1; row < records.size(); ++row) {
        for (size_t i = 0; i < records[row].size(); ++i) {
            const Field& field = records[row][i];
            const int place = static_cast<int>(i) + 1;
            if (!field) {
                Check(sqlite3_bind_null(raw, place));
            } else if (*field == "true" || *field == "false") {
                Check(sqlite3_bind_int(raw, place, *field == "true"));
            } else {
                Check(sqlite3_bind_text(raw, place, field->data(), static_cast<int>(field->size()), SQLITE_TRANSIENT));
            }
        }
        Check(sqlite3_step(raw));
        Check(sqlite3_reset(raw));
    }
}

void SqliteOracle::SetStepLimit(unsigned steps) {
    sqlite3_progress_handler(
        m_database, static_cast<int>(steps), [](void*) { return 1; }, nullptr);
}

Rows SqliteOracle::Run(const std::string& sql) {
    sqlite3_stmt* raw = nullptr;
    Check(sqlite3_prepare_v2(m_database, sql.c_str(), -1, &raw, nullptr));
    const Statement statement(raw, sqlite3_finalize);
    Rows result;
    const int columns = sqlite3_column_count(raw);
    for (int i = 0; i < columns; ++i) result.columns.emplace_back(sqlite3_column_name(raw, i));
    for (;;) {
        const int code = sqlite3_step(raw);
        Check(code);
        if (code != SQLITE_ROW) return result;
        Row row;
        for (int i = 0; i < columns; ++i) {
            switch (sqlite3_column_type(raw, i)) {
                case SQLITE_INTEGER:
                    row.emplace_back(static_cast<long long>(sqlite3_column_int64(raw, i)));
                    break;
                case SQLITE_FLOAT:
                    row.emplace_back(sqlite3_column_double(raw, i));
                    break;
                case SQLITE_NULL:
                    row.emplace_back();
                    break;
                default: {
                    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(raw, i));
                    row.emplace_back(std::string(text, static_cast<size_t>(sqlite3_column_bytes(raw, i))));
                }
            }
        }
        result.rows.push_back(std::move(row));
    }
}

}  // namespace qve::test
