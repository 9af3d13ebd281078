// Queries whose sort keys, hash tables and copies of columns do not fit into the memory budget.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <fstream>
#include <random>

#include "tests/e2e/RowComparison.h"
#include "tests/e2e/SqliteOracle.h"
#include "tests/e2e/TestServer.h"

namespace qve::test {
namespace {

constexpr unsigned rows = 300'000;

TEST(MemoryBudget, QueriesBeyondItGiveTheirRows) {
    TestServer server({"small_budget", "memory-budget:1\nwork-buffer-size:1\n"});
    const std::string path = (server.GetFolder() / "big").string();
    std::mt19937 random(20261124);
    {
        std::ofstream csv(path + ".csv");
        csv << "id,k,s,x\n";
        for (unsigned i = 0; i < rows; ++i) {
            csv << fmt::format("{},{},name {},{}\n", i, random() * 4096LL, random() % 200'000,
                               0.25 * (random() % 1000));
        }
    }
    std::ofstream(path + ".sql") << "create table big (id integer, k integer, s text, x real);";
    SqliteOracle oracle;
    oracle.Load(server.GetFolder().string(), "big");
    server.GetClient().Run("(create schema [r])");
    server.GetClient().Run("(create table-from-query [r].[big] (text \"" + path + ".csv\"))");

    const struct {
        const char* vql;
        const char* sql;
    } queries[] = {
        // As many groups as rows, by numbers and by texts.
        {"(aggregate (aggregate (table [r].[big]) ([k]) (([n] (count)) ([x] (sum [x])))) () (([groups] (count)) ([n] "
         "(sum "
         "[n])) ([x] (sum [x]))))",
         "select count(*), sum(n), sum(x) from (select count(*) n, sum(x) x from big group by k)"},
        {"(aggregate (aggregate (table [r].[big]) ([s] [k]) (([n] (count)))) () (([groups] (count)) ([n] (sum [n]))))",
         "select count(*), sum(n) from (select count(*) n from big group by s, k)"},
        // A join with as many inner rows, each met by its neighbour.
        {"(aggregate (join (project (table [r].[big]) (([next] (+ [id] 1)))) (table [r].[big]) (([next] [id])) (([y] "
         "[x]) "
         "([t] [s]))) () (([n] (count)) ([y] (sum [y])) ([t] (max [t]))))",
         "select count(*), sum(r.x), max(r.s) from big l join big r on r.id = l.id + 1"},
        {"(aggregate (join (table [r].[big]) (table [r].[big]) (([s] [s]) ([k] [k])) (([other] [id]))) () (([n] "
         "(count)) "
         "([d] (sum (- [other] [id])))))",
         "select count(*), sum(r.id - l.id) from big l join big r on r.s = l.s and r.k = l.k"},
        // A sort by two keys with all columns, of which each row's place is checked.
        {"(aggregate (order (table [r].[big]) (([s] desc [place]) ([k] asc))) () (([sum] (sum (* (% [place] 1000) "
         "[id]))) "
         "([x] (sum (* [x] (to_real (% [place] 7)))))))",
         "select sum((place % 1000) * id), sum(x * (place % 7)) from (select *, row_number() over (order by s desc, k) "
         "- 1 "
         "place from big)"},
        {"(restrict (top (table [r].[big]) (([x] asc) ([k] desc)) 50000) ([id] [x]))",
         "select id, x from big order by x, k desc limit 50000"},
    };
    for (const auto& [vql, sql] : queries) {
        SCOPED_TRACE(vql);
        EXPECT_EQ(Differences(server.Query(vql), oracle.Run(sql).rows, false), "");
    }
}

}  // namespace
}  // namespace qve::test
