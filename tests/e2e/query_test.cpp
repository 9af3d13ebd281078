// Runs each query test file against a server of its own, under several settings.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/e2e/QueryFile.h"
#include "tests/e2e/SqliteOracle.h"
#include "tests/support/EngineClient.h"

namespace qve::test {
namespace {

namespace fs = std::filesystem;

const std::string dataFolder = QVE_TEST_SOURCES "/data";

// What a server is started with: lines of its configuration file, and whether it may use vector instructions; and how
// queries are run.
struct Setting {
    std::string name;
    std::string configuration;
    bool vectors = true;
    bool plans = false;  // each query is run by the text of its plan
};

const Setting settings[] = {
    {"defaults", ""},
    {"no_vectors", "", false},
    {"no_encodings", "encodings:false\n"},
    {"large_pages", "block-length:4096\n"},
    {"small_work_buffer", "work-buffer-size:1\n"},
    {"plan_text", "", true, true},
};

std::optional<double> Number(const Cell& cell) {
    if (const auto* integer = std::get_if<long long>(&cell)) return static_cast<double>(*integer);
    if (const auto* real = std::get_if<double>(&cell)) return *real;
    return std::nullopt;
}

// Numbers may differ in the last digits, since sums are taken in another order.
bool Same(const Cell& a, const Cell& b) {
    const auto x = Number(a);
    const auto y = Number(b);
    if (!x || !y) return a == b;
    if (std::holds_alternative<long long>(a) && std::holds_alternative<long long>(b)) return a == b;
    return *x == *y || std::abs(*x - *y) <= 1e-9 * std::max(std::abs(*x), std::abs(*y));
}

bool Same(const Row& a, const Row& b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](const Cell& x, const Cell& y) { return Same(x, y); });
}

// A text by which rows can be brought in one order on both sides.
std::string SortKey(const Row& row) {
    std::string key;
    for (const Cell& cell : row) {
        const auto number = Number(cell);
        key += (number ? fmt::format("{:.6g}", *number) : FormatCell(cell)) + "\x1f";
    }
    return key;
}

void Sort(std::vector<Row>& rows) {
    std::stable_sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) { return SortKey(a) < SortKey(b); });
}

std::string FormatRow(const Row& row) {
    std::string text;
    for (const Cell& cell : row) text += (text.empty() ? "" : " | ") + FormatCell(cell);
    return text;
}

Cell ParseCell(const std::string& text) {
    if (text == "NULL") return {};
    const char* end = text.data() + text.size();
    long long integer = 0;
    if (std::from_chars(text.data(), end, integer).ptr == end && !text.empty()) return integer;
    double real = 0;
    if (std::from_chars(text.data(), end, real).ptr == end && !text.empty()) return real;
    return text;
}

std::vector<Row> ParseRows(const std::string& text) {
    std::vector<Row> rows;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        Row row;
        for (size_t from = 0; from != std::string::npos;) {
            const size_t to = line.find(" | ", from);
            row.push_back(ParseCell(line.substr(from, to == std::string::npos ? to : to - from)));
            from = to == std::string::npos ? to : to + 3;
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

class QueryTest : public testing::TestWithParam<std::tuple<std::string, Setting>> {
protected:
    void SetUp() override {
        m_folder = fs::temp_directory_path() / fmt::format("qve_query_test_{}_{}", ::getpid(), s_next++);
        fs::create_directories(m_folder);
        const Setting& setting = std::get<1>(GetParam());
        const fs::path config = m_folder / "qveconfig.yaml";
        std::ofstream(config) << setting.configuration;
        ::setenv("QUILLON_VECTORIZATION", setting.vectors ? "1" : "0", 1);
        m_process.emplace(config.string());
        m_client.emplace(m_process->GetDescriptor());
        m_client->Run("(create database \"" + (m_folder / "test.db").string() + "\")");
        m_client->Run("(create schema [shop])");
    }
    void TearDown() override {
        m_client.reset();
        m_process.reset();
        fs::remove_all(m_folder);
    }

    void Load(const std::string& name) {
        m_client->Run("(create table-from-query [shop].[" + name + "] (text \"" + dataFolder + "/" + name + ".csv\"))");
        m_oracle.Load(dataFolder, name);
    }

    // The plan of a query as one text; empty for what has none. The listing leaves the closing parentheses out.
    std::string PlanText(const std::string& query) {
        constexpr int hasNoPlan = 48037;
        std::vector<Row> lines;
        try {
            lines = m_client->Run("(explain " + query + ")").rows;
        } catch (const EngineError& error) {
            if (error.GetStatus() != hasNoPlan) throw;
            return {};
        }
        std::string plan;
        size_t open = 0;
        for (const Row& line : lines) {
            const std::string& text = std::get<std::string>(line[0]);
            const size_t depth = text.find_first_not_of(' ') / 2;
            for (; open > depth; --open) plan += ')';
            plan += "\n(" + text.substr(2 * depth);
            ++open;
        }
        return plan + std::string(open, ')');
    }

    std::vector<Row> Run(const std::string& query) {
        const std::string plan = std::get<1>(GetParam()).plans ? PlanText(query) : std::string();
        return plan.empty() ? m_client->Run(query).rows : m_client->RunPlan(plan).rows;
    }

    void CheckQuery(const QueryStep& step) {
        std::vector<Row> actual = Run(step.text);
        std::vector<Row> expected = step.oracle ? m_oracle.Run(step.expected).rows : ParseRows(step.expected);
        if (step.sorted) {
            Sort(actual);
            Sort(expected);
        }
        ASSERT_EQ(actual.size(), expected.size()) << "number of rows";
        for (size_t i = 0; i < actual.size(); ++i) {
            ASSERT_TRUE(Same(actual[i], expected[i]))
                << "row " << i << "\n  is       " << FormatRow(actual[i]) << "\n  expected " << FormatRow(expected[i]);
        }
    }

    void CheckError(const QueryStep& step) {
        try {
            m_client->Run(step.text);
            FAIL() << "succeeds";
        } catch (const EngineError& error) {
            const std::string text = error.what();
            EXPECT_TRUE(step.status == 0 || error.GetStatus() == step.status) << error.GetStatus() << ": " << text;
            EXPECT_TRUE(step.message.empty() || text == step.message) << text;
        }
    }

    void RunStep(const QueryStep& step) {
        switch (step.kind) {
            case QueryStep::Kind::load:
                Load(step.text);
                break;
            case QueryStep::Kind::statement:
                m_client->Run(step.text);
                break;
            case QueryStep::Kind::query:
                CheckQuery(step);
                break;
            case QueryStep::Kind::error:
                CheckError(step);
                break;
        }
    }

private:
    inline static int s_next = 0;
    fs::path m_folder;
    std::optional<EngineProcess> m_process;
    std::optional<EngineClient> m_client;
    SqliteOracle m_oracle;
};

TEST_P(QueryTest, GivesTheExpectedRows) {
    const std::string path = QVE_TEST_SOURCES "/e2e/" + std::get<0>(GetParam()) + ".vqt";
    for (const QueryStep& step : ReadQueryFile(path)) {
        SCOPED_TRACE(fmt::format("{}:{}: {}", path, step.line, step.text));
        try {
            RunStep(step);
        } catch (const EngineError& error) {
            ADD_FAILURE() << error.GetStatus() << ": " << error.what();
        }
    }
}

std::vector<std::string> QueryFiles() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(QVE_TEST_SOURCES "/e2e")) {
        if (entry.path().extension() == ".vqt") names.push_back(entry.path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

INSTANTIATE_TEST_SUITE_P(Files, QueryTest,
                         testing::Combine(testing::ValuesIn(QueryFiles()), testing::ValuesIn(settings)),
                         [](const auto& info) { return std::get<0>(info.param) + "_" + std::get<1>(info.param).name; });

}  // namespace
}  // namespace qve::test
