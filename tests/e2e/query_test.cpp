// Runs each query test file against a server of its own, under several settings.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <sstream>

#include "tests/e2e/QueryFile.h"
#include "tests/e2e/RowComparison.h"
#include "tests/e2e/SqliteOracle.h"
#include "tests/e2e/TestServer.h"

namespace qve::test {
namespace {

namespace fs = std::filesystem;

const std::string dataFolder = QVE_TEST_SOURCES "/data";

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

class QueryTest : public testing::TestWithParam<std::tuple<std::string, ServerSetting>> {
protected:
    QueryTest() : m_server(std::get<1>(GetParam())) { m_server.GetClient().Run("(create schema [shop])"); }

    void Load(const std::string& name) {
        m_server.GetClient().Run("(create table-from-query [shop].[" + name + "] (text \"" + dataFolder + "/" + name +
                                 ".csv\"))");
        m_oracle.Load(dataFolder, name);
    }

    void CheckQuery(const QueryStep& step) {
        const std::vector<Row> expected = step.oracle ? m_oracle.Run(step.expected).rows : ParseRows(step.expected);
        EXPECT_EQ(Differences(m_server.Query(step.text), expected, step.sorted), "");
    }

    void CheckError(const QueryStep& step) {
        try {
            m_server.GetClient().Run(step.text);
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
                m_server.GetClient().Run(step.text);
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
    TestServer m_server;
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
                         testing::Combine(testing::ValuesIn(QueryFiles()), testing::ValuesIn(ServerSettings())),
                         [](const auto& info) { return std::get<0>(info.param) + "_" + std::get<1>(info.param).name; });

}  // namespace
}  // namespace qve::test
