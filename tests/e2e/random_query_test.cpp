// Random queries over random tables, under every setting of the server, against SQLite. The seeds are fixed, so that a
// failure is found again. In the environment, QVE_RANDOM_SECONDS=N has each setting run on for N seconds with fresh
// seeds, which are printed; QVE_RANDOM_SEED=N runs the one round of that seed, and QVE_RANDOM_FAULTS=N goes on to the
// fault number N.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>

#include "tests/e2e/RandomQuery.h"
#include "tests/e2e/RandomTables.h"
#include "tests/e2e/RowComparison.h"
#include "tests/e2e/SqliteOracle.h"
#include "tests/e2e/TestServer.h"

namespace qve::test {
namespace {

constexpr unsigned firstSeed = 20261123;
constexpr unsigned rounds = 3;
constexpr unsigned queriesPerRound = 200;
constexpr unsigned mostDepth = 5;

// SQLite has no hash joins: what it takes too long for is left out.
constexpr unsigned oracleSteps = 20'000'000;

std::optional<unsigned> Environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::optional<unsigned>(std::strtoul(value, nullptr, 10)) : std::nullopt;
}

class RandomQueryTest : public testing::TestWithParam<ServerSetting> {
protected:
    RandomQueryTest() : m_server(GetParam()) {
        m_server.GetClient().Run("(create schema [r])");
        m_oracle.SetStepLimit(oracleSteps);
    }

    // Makes tables, asks queries over them, and keeps some of the results as further tables.
    void RunRound(unsigned seed) {
        SCOPED_TRACE(fmt::format("seed {}", seed));
        std::mt19937 random(seed);
        const std::string prefix = fmt::format("t{}_", m_round++);
        std::vector<RandomSource> sources;
        for (const RandomTable& table : MakeRandomTables(prefix, random)) {
            Load(table);
            sources.push_back(table.source);
        }
        RandomQueryMaker maker(sources, random);
        for (unsigned i = 0; i < queriesPerRound && m_faultsLeft > 0; ++i) {
            const RandomQuery query = maker.Make(1 + i * mostDepth / queriesPerRound);
            if (Check(query) == Answer::right && i % 40 == 39) Keep(query, prefix + "k" + std::to_string(i), sources);
        }
    }

    int m_faultsLeft = static_cast<int>(Environment("QVE_RANDOM_FAULTS").value_or(1));

private:
    void Load(const RandomTable& table) {
        const std::string path = (m_server.GetFolder() / table.source.name).string();
        std::ofstream(path + ".csv") << table.csv;
        std::ofstream(path + ".sql") << table.sql;
        m_oracle.Load(m_server.GetFolder().string(), table.source.name);
        if (table.source.rows == 0) {
            m_server.GetClient().Run(fmt::format("(create table [r].[{}] ({}))", table.source.name, table.definitions));
            return;
        }
        m_server.GetClient().Run(
            fmt::format("(create table-from-query [r].[{}] (text \"{}.csv\" ({}) ((header-row \"true\") "
                        "(field-delimiter \",\"))))",
                        table.source.name, path, table.schema));
    }

    // The rows of a query as a stored table.
    void Keep(const RandomQuery& query, const std::string& name, std::vector<RandomSource>& sources) {
        m_oracle.Run(fmt::format("create table {} as {}", name, query.sql));
        const uint64_t rows = std::get<long long>(m_oracle.Run("select count(*) from " + name).rows[0][0]);
        if (rows > 5000) return;
        const std::string statement = fmt::format("(create table-from-query [r].[{}] {})", name, query.vql);
        if (std::getenv("QVE_TEST_KEEP")) std::printf("%s\n", statement.c_str());
        m_server.GetClient().Run(statement);
        sources.push_back({name, query.columns, rows, false});
    }

    // What is wrong with the rows of a query; nothing where SQLite has no answer.
    std::optional<std::string> Fault(const RandomQuery& query) {
        std::vector<Row> expected;
        try {
            expected = m_oracle.Run(query.sql).rows;
        } catch (const std::runtime_error& error) {
            // It may take too long, and does not take every outer join below a union.
            const std::string text = error.what();
            if (text.find("interrupted") != text.npos || text.find("tables to its right") != text.npos) {
                return std::nullopt;
            }
            return text;
        }
        try {
            return Differences(m_server.Query(query.RestrictedVql()), expected, !query.ordered);
        } catch (const EngineError& error) {
            return fmt::format("error {}: {}", error.GetStatus(), error.what());
        }
    }

    enum class Answer { none, right, wrong };

    // A fault is reported of the least part of the query that has it.
    Answer Check(const RandomQuery& query) {
        const std::optional<std::string> fault = Fault(query);
        if (!fault) return Answer::none;
        if (fault->empty()) return Answer::right;
        for (const auto& input : query.inputs) {
            if (Check(*input) == Answer::wrong) return Answer::wrong;
        }
        ADD_FAILURE() << *fault << "\n" << query.RestrictedVql() << "\n" << query.sql;
        --m_faultsLeft;
        return Answer::wrong;
    }

    TestServer m_server;
    SqliteOracle m_oracle;
    unsigned m_round = 0;
};

TEST_P(RandomQueryTest, GivesTheRowsOfSqlite) {
    const std::optional<unsigned> only = Environment("QVE_RANDOM_SEED");
    if (only) return RunRound(*only);
    for (unsigned round = 0; round < rounds && m_faultsLeft > 0; ++round) RunRound(firstSeed + round);
}

TEST_P(RandomQueryTest, RunsOnWithFreshSeeds) {
    const std::optional<unsigned> seconds = Environment("QVE_RANDOM_SECONDS");
    if (!seconds) GTEST_SKIP() << "QVE_RANDOM_SECONDS is not set";
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(*seconds);
    std::random_device seeds;
    while (std::chrono::steady_clock::now() < end && m_faultsLeft > 0) {
        const unsigned seed = seeds();
        std::printf("seed %u\n", seed);
        RunRound(seed);
    }
}

INSTANTIATE_TEST_SUITE_P(Settings, RandomQueryTest, testing::ValuesIn(ServerSettings()),
                         [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(Groupings, RandomQueryTest, testing::ValuesIn(GroupingSettings()),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace qve::test
