// Each function of the language, with columns and constants in every place: whatever the mix, whatever the rows
// selected before, whether folded, a row gives the same value.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "system/unicode.h"
#include "tests/support/EngineClient.h"
#include "tests/support/ScratchFolder.h"
#include "vql/VQLFunction.h"
#include "vql/VQLFunctionTable.h"

namespace qve::test {
namespace {

namespace fs = std::filesystem;

// Values of a type as a statement writes them; in a file they stand without their quotes. Empty: null.
using Values = std::array<std::string, 12>;

const std::map<VQLDataType, std::pair<std::string, std::array<Values, 3>>> samples = {
    {VQLDataType::integer,
     {"bigint",
      {{{"7", "0", "-3", "", "42", "2", "1", "100000", "-1", "3", "9007199254740993", "5"},
        {"2", "3", "-2", "4", "", "1", "1", "7", "0", "-1", "2", "4"},
        {"1", "2", "3", "4", "5", "", "-1", "0", "1", "2", "3", "4"}}}}},
    {VQLDataType::double_,
     {"double",
      {{{"0.5", "2.0", "-1.25", "", "3.75", "1.0", "0.0", "1e10", "-0.5", "2.5", "100.0", "0.25"},
        {"1.5", "2.0", "3.0", "1.0", "", "-2.0", "0.0", "0.5", "1.0", "2.0", "-1.0", "4.0"},
        {"1.0", "2.0", "1.0", "3.0", "1.0", "", "-1.0", "0.0", "1.0", "2.0", "1.0", "4.0"}}}}},
    {VQLDataType::boolean,
     {"boolean",
      {{{"true", "false", "true", "", "false", "true", "false", "true", "true", "false", "true", "false"},
        {"true", "true", "false", "true", "", "false", "false", "true", "false", "true", "true", "true"},
        {"true", "true", "false", "false", "true", "", "true", "true", "false", "false", "true", "true"}}}}},
    {VQLDataType::string,
     {"varchar",
      {{{"\"a,b,c\"", "\"Ärger\"", "\"12\"", "", "\"2024-02-29\"", "\"  x  \"", "\"banana\"", "\"2.5\"", "\"a.b.a\"",
         "\"Zebra\"", "\"true\"", "\"1:02:03\""},
        {"\",\"", "\"r\"", "\"1\"", "\"x\"", "", "\"x\"", "\"an\"", "\"5\"", "\"a\"", "\"z\"", "\"[\"", "\":\""},
        {"\"x\"", "\"$0$0\"", "\"y\"", "\"\"", "\"1\"", "", "\"-\"", "\"q\"", "\"b\"", "\"Z\"", "\"t\"", "\"0\""}}}}},
    {VQLDataType::date,
     {"date",
      {{{"#2024-02-29#", "#2023-12-31#", "#1999-01-01#", "", "#1582-10-15#", "#2024-01-01#", "#2000-06-15#",
         "#1970-01-01#", "#2024-03-31#", "#2025-11-30#", "#1900-02-28#", "#2024-12-29#"},
        {"#2024-03-01#", "#2023-12-30#", "#1999-01-01#", "#2000-01-01#", "", "#2023-01-07#", "#2000-06-14#",
         "#1970-01-08#", "#2024-04-01#", "#2024-11-30#", "#1900-03-01#", "#2024-12-30#"},
        {}}}}},
    {VQLDataType::datetime,
     {"datetime",
      {{{"#2024-02-29 13:45:10#", "#2023-12-31 23:59:59#", "#1999-01-01 00:00:00#", "", "#1582-10-15 12:00:00#",
         "#2024-01-01 00:00:01#", "#2000-06-15 06:30:00#", "#1970-01-01 00:00:00#", "#2024-03-31 01:02:03#",
         "#2025-11-30 17:00:00#", "#1900-02-28 23:00:00#", "#2024-12-29 10:10:10#"},
        {"#2024-03-01 00:00:00#", "#2023-12-30 23:59:59#", "#1999-01-01 00:00:00#", "#2000-01-01 00:00:00#", "",
         "#2023-01-07 12:00:00#", "#2000-06-14 06:30:01#", "#1970-01-08 00:00:00#", "#2024-04-01 01:02:04#",
         "#2024-11-30 17:00:00#", "#1900-03-01 00:00:00#", "#2024-12-30 10:10:10#"},
        {}}}}},
    {VQLDataType::duration,
     {"duration",
      {{{"#1:02:03#", "#0:00:00#", "#3:00:00:00#", "", "#0:00:01#", "#23:59:59#", "#10:00:00:01#", "#0:10:00#",
         "#2:02:02#", "#1:00:00:00#", "#5:05:05#", "#0:30:00#"},
        {"#1:00:00#", "#0:00:01#", "#1:00:00:00#", "#2:00:00#", "", "#0:00:00#", "#10:00:00:01#", "#0:20:00#",
         "#2:02:03#", "#2:00:00:00#", "#4:05:05#", "#0:31:00#"},
        {}}}}},
};

constexpr std::array constantRows = {0U, 7U};

std::string ColumnName(VQLDataType type, size_t place) {
    return fmt::format("{}{}", samples.at(type).first, type == VQLDataType::boolean ? place % 2 : place);
}

std::string CellText(const std::string& literal) {
    if (literal.empty()) return {};
    if (literal.front() == '#') return literal.substr(1, literal.size() - 2);
    return literal;
}

// Two columns of a type are enough but for the functions of three texts or numbers.
bool HasColumn(VQLDataType type, size_t place) {
    const Values& values = samples.at(type).second[place];
    return std::any_of(values.begin(), values.end(), [](const std::string& value) { return !value.empty(); });
}

bool IsTested(const VQLFunction& function) {
    // Draws differ and moments pass.
    static const std::set<std::wstring> others = {L"random", L"now", L"today", L"utc"};
    if (function.IsAggregate() || others.count(function.GetName())) return false;
    for (const VQLDataType type : function.GetArguments()) {
        if (!samples.count(type)) return false;
    }
    return true;
}

// Its first argument is a type.
bool IsCast(const VQLFunction& function) {
    return function.GetName() == L"cast";
}

// A row of doubles that computed in another order may differ in its last digits.
bool Same(const Cell& a, const Cell& b) {
    const auto* x = std::get_if<double>(&a);
    const auto* y = std::get_if<double>(&b);
    if (!x || !y) return a == b;
    return *x == *y || (std::isnan(*x) && std::isnan(*y)) || std::fabs(*x - *y) <= 1e-12 * std::fabs(*x);
}

class FunctionTest : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        const std::string config = (m_folder / "qveconfig.yaml").string();
        std::ofstream(config) << GetParam();
        m_process.emplace(config);
        m_client.emplace(m_process->GetDescriptor());
        m_client->Run("(create database \"" + (m_folder / "test.db").string() + "\")");
        m_client->Run("(create schema [s])");
        const std::string schema = WriteSamples((m_folder / "sample.csv").string());
        m_client->Run(fmt::format("(create table-from-query [s].[t] (text \"{}\" ({}) ((header-row \"true\"))))",
                                  (m_folder / "sample.csv").string(), schema));
    }
    void TearDown() override {
        m_client.reset();
        m_process.reset();
    }

    // Writes the samples as a file and gives its schema.
    static std::string WriteSamples(const std::string& path) {
        std::vector<std::pair<std::string, Values>> columns;
        std::string schema = "((name \"id\") (type \"bigint\"))";
        std::string header = "id";
        for (const auto& [type, sample] : samples) {
            for (size_t place = 0; place < 3; ++place) {
                if (!HasColumn(type, place)) continue;
                columns.emplace_back(fmt::format("{}{}", sample.first, place), sample.second[place]);
                schema += fmt::format(" ((name \"{}\") (type \"{}\"))", columns.back().first, sample.first);
                header += "," + columns.back().first;
            }
        }
        std::ofstream file(path);
        file << header << '\n';
        for (size_t row = 0; row < std::tuple_size_v<Values>; ++row) {
            file << row;
            for (const auto& [name, values] : columns) file << ',' << CellText(values[row]);
            file << '\n';
        }
        return schema;
    }

    // The call with a constant from row `row` in each place of `constants`, else a column.
    static std::string Call(const VQLFunction& function, unsigned constants, unsigned row) {
        std::string text = "(" + narrow(function.GetName());
        std::map<VQLDataType, size_t> used;
        for (size_t i = 0; i < function.GetArguments().size(); ++i) {
            const VQLDataType type = function.GetArguments()[i];
            if (i == 0 && IsCast(function)) {
                text += " ((type \"" + samples.at(type).first + "\"))";
                continue;
            }
            const size_t place = used[type]++;
            const bool constant = constants >> i & 1;
            text += " " + (constant ? samples.at(type).second[type == VQLDataType::boolean ? place % 2 : place][row]
                                    : "[" + ColumnName(type, place) + "]");
        }
        return text + ")";
    }

    static std::string Signature(const VQLFunction& function) {
        return narrow(VQLFunctionTable::Signature(function.GetName(), function.GetArguments()));
    }

    void CheckFunction(const VQLFunction& function) {
        SCOPED_TRACE(Signature(function));
        const std::string source = "(table [s].[t])";
        std::string bindings = "([all] " + Call(function, 0, 0) + ")";
        std::string names = "[id] [all]";
        std::vector<unsigned> rows;
        const unsigned everything = (1U << function.GetArguments().size()) - 1;
        for (const unsigned row : constantRows) {
            for (unsigned constants = 1; constants <= everything; ++constants) {
                if (IsCast(function) && constants != 3) continue;
                bindings += fmt::format(" ([c{}] {})", rows.size(), Call(function, constants, row));
                names += fmt::format(" [c{}]", rows.size());
                rows.push_back(row);
            }
        }
        const auto run = [&](const std::string& from) {
            return m_client
                ->Run(fmt::format("(restrict (order (project {} ({})) (([id] asc))) ({}))", from, bindings, names))
                .rows;
        };
        const std::vector<Row> all = run(source);
        ASSERT_EQ(all.size(), std::tuple_size_v<Values>);
        for (size_t c = 0; c < rows.size(); ++c) {
            EXPECT_TRUE(Same(all[rows[c]][c + 2], all[rows[c]][1]))
                << bindings << "\n[c" << c << "] is " << FormatCell(all[rows[c]][c + 2]) << ", not "
                << FormatCell(all[rows[c]][1]);
        }
        const std::vector<Row> some = run("(select " + source + " (and (> [id] 2) (<> [id] 6)))");
        ASSERT_EQ(some.size(), 8U);
        for (const Row& row : some) {
            const Row& expected = all[static_cast<size_t>(std::get<long long>(row[0]))];
            for (size_t c = 1; c < row.size(); ++c)
                EXPECT_TRUE(Same(row[c], expected[c])) << bindings << " column " << c;
        }
        if (function.GetReturnType() == VQLDataType::boolean) CheckPredicate(function, all);
    }

    void CheckPredicate(const VQLFunction& function, const std::vector<Row>& all) {
        long long expected = 0;
        for (const Row& row : all) expected += row[1] == Cell(1LL);
        const std::string call = Call(function, 0, 0);
        for (const std::string& predicate :
             {call, "(and " + call + " (>= [id] 0))", "(or (< [id] 0) " + call + ")", "(not (not " + call + "))"}) {
            const Rows counted =
                m_client->Run(fmt::format("(aggregate (select (table [s].[t]) {}) () (([n] (count))))", predicate));
            // No row, no group.
            EXPECT_EQ(counted.rows.empty() ? Cell(0LL) : counted.rows[0][0], Cell(expected)) << predicate;
        }
    }

    const test::ScratchFolder m_scratch;
    const fs::path m_folder = m_scratch.GetPath();
    std::optional<EngineProcess> m_process;
    std::optional<EngineClient> m_client;
};

TEST_P(FunctionTest, EachIsTheSameOfColumnsAndOfConstants) {
    unsigned tested = 0;
    for (const auto& [name, function] : VQLFunction::Table().GetEntries()) {
        if (!IsTested(function)) continue;
        ++tested;
        try {
            CheckFunction(function);
        } catch (const EngineError& error) {
            ADD_FAILURE() << Signature(function) << ": " << error.GetStatus() << ": " << error.what();
        }
    }
    EXPECT_GT(tested, 250U);
}

INSTANTIATE_TEST_SUITE_P(Settings, FunctionTest, testing::Values("", "parsingconstantfolding:false\n"),
                         [](const auto& info) { return info.param.empty() ? "Folding" : "NoFolding"; });

}  // namespace
}  // namespace qve::test
