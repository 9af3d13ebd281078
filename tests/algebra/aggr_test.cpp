#include "algebra/Aggr.h"

#include <map>

#include "algebra/AggrExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/RadixGrouping.h"
#include "algebra/status.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

using Texts = std::vector<std::string>;
using TextRows = std::vector<Texts>;

RefCntPtr<Exp> Measure(const std::wstring& name, const std::wstring& op, const std::wstring& column) {
    return MakeRef<AggrBinaryExp>(name, op, MakeRef<ColumnExp>(column));
}

std::vector<RefCntPtr<Exp>> CountAndSum() {
    return {MakeRef<AggrUnaryExp>(L"n", L"countstar"), Measure(L"present", L"count", L"v"),
            Measure(L"s", L"sum", L"v")};
}

// Groups in the order of their first rows: the keys, the rows, the values that are not null, their sum.
TextRows NaiveGroups(const TextRows& keys, const Texts& values, const std::vector<uint64_t>& selected) {
    struct Group {
        Texts key;
        long long rows = 0;
        long long present = 0;
        long long sum = 0;
    };
    std::map<Texts, size_t> numbers;
    std::vector<Group> groups;
    for (const uint64_t row : selected) {
        const auto [found, isNew] = numbers.emplace(keys[row], groups.size());
        if (isNew) groups.push_back({keys[row]});
        Group& group = groups[found->second];
        ++group.rows;
        if (values[row] == "NULL") continue;
        ++group.present;
        group.sum += std::stoll(values[row]);
    }
    TextRows result;
    for (const Group& group : groups) {
        Texts row = group.key;
        row.push_back(std::to_string(group.rows));
        row.push_back(std::to_string(group.present));
        row.push_back(group.present ? std::to_string(group.sum) : "NULL");
        result.push_back(row);
    }
    return result;
}

struct Case {
    std::vector<std::wstring> keyTypes;
    SampleOptions options;
    unsigned rows;
    unsigned pageSize;
    double share;
};

void CheckAgainstNaive(const Case& sample, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<RefCntPtr<Column>> columns;
    std::vector<std::wstring> names;
    for (const std::wstring& type : sample.keyTypes) {
        names.push_back(L"k" + std::to_wstring(names.size()));
        columns.push_back(SampleColumn(type, names.back(), sample.rows, sample.options, random));
    }
    SampleOptions values;
    values.distinct = 1000;
    values.nulls = 0.2;
    columns.push_back(SampleColumn(L"long", L"v", sample.rows, values, random));
    const auto table = TableOf(columns);
    table->Build(1);
    const TextRows keys = Rows(*table, names);
    const Texts cells = Cells(*columns.back());

    const auto source = MakeRef<SampleSelect>(table, sample.share, seed);
    const auto aggr = MakeRef<Aggr>(source, ColumnNames(names.begin(), names.end()), CountAndSum());
    aggr->Build(sample.pageSize);
    names.insert(names.end(), {L"n", L"present", L"s"});
    EXPECT_EQ(Rows(*aggr, names), NaiveGroups(keys, cells, source->GetSelected()));
}

constexpr unsigned seed = 20260711;

TEST(Aggr, EveryKeyTypeGroupsAsANaiveOneDoes) {
    for (const std::wstring& type : SampleTypes()) {
        for (const unsigned pageSize : {1u, 7u, 1024u}) {
            for (const double share : {1.0, 0.3}) {
                for (const unsigned distinct : {1u, 4u, 300u}) {
                    SampleOptions options;
                    options.distinct = distinct;
                    options.nulls = 0.1;
                    options.nan = true;
                    SCOPED_TRACE("seed " + std::to_string(seed) + " type " + std::string(type.begin(), type.end()) +
                                 " page " + std::to_string(pageSize) + " distinct " + std::to_string(distinct));
                    CheckAgainstNaive({{type}, options, 1500, pageSize, share}, seed + pageSize);
                }
            }
        }
    }
}

TEST(Aggr, SeveralKeysGroupAsANaiveOneDoes) {
    const std::vector<std::vector<std::wstring>> keys = {
        {L"tiny", L"uchr"}, {L"bit", L"tiny"},          {L"short", L"usht"},          {L"long", L"text"},
        {L"text", L"text"}, {L"double", L"bigint"},     {L"date", L"short", L"text"}, {L"bit", L"bit", L"float"},
        {L"uchr", L"bit"},  {L"datetime", L"duration"},
    };
    for (const std::vector<std::wstring>& types : keys) {
        for (const unsigned pageSize : {1u, 7u, 1024u}) {
            SampleOptions options;
            options.distinct = 9;
            options.nulls = 0.2;
            options.nan = true;
            SCOPED_TRACE("seed " + std::to_string(seed) + " first type " +
                         std::string(types[0].begin(), types[0].end()) + " page " + std::to_string(pageSize));
            CheckAgainstNaive({types, options, 2500, pageSize, pageSize == 7 ? 0.5 : 1.0}, seed);
        }
    }
}

// Ranges that an array takes at once, that it grows into, and that make it give up for a hash in the middle.
TEST(Aggr, IntegersOfAnySpreadGroupAsANaiveOneDoes) {
    for (const wchar_t* type : {L"long", L"bigint", L"ulng", L"oid"}) {
        for (const unsigned spread : {1u, 1000u, 400000u}) {
            SampleOptions options;
            options.distinct = 2500;
            options.nulls = 0.05;
            options.spread = spread;
            SCOPED_TRACE("seed " + std::to_string(seed) + " spread " + std::to_string(spread));
            CheckAgainstNaive({{type}, options, 8000, 1024, 1.0}, seed);
        }
    }
}

TEST(Aggr, AnArrayThatIsOutgrownHandsItsGroupsToAHash) {
    std::vector<std::string> keys;
    for (int i = 0; i < 3000; ++i) keys.push_back(std::to_string(i % 1500));
    keys.insert(keys.end(),
                {"NULL", "9000000000000000000", "7", "-9000000000000000000", "NULL", "9000000000000000000"});
    const auto table = TableOf({ColumnOf(L"bigint", L"k", keys)});
    const auto aggr = MakeRef<Aggr>(MakeRef<Scan>(table), ColumnNames{L"k"},
                                    std::vector<RefCntPtr<Exp>>{MakeRef<AggrUnaryExp>(L"n", L"countstar")});
    EXPECT_EQ(aggr->Build(100), 1503u);
    const TextRows rows = Rows(*aggr, {L"k", L"n"});
    EXPECT_EQ(rows[7], (Texts{"7", "3"}));
    EXPECT_EQ(rows[1499], (Texts{"1499", "2"}));
    EXPECT_EQ(rows[1500], (Texts{"NULL", "2"}));
    EXPECT_EQ(rows[1501], (Texts{"9000000000000000000", "2"}));
    EXPECT_EQ(rows[1502], (Texts{"-9000000000000000000", "1"}));
}

TEST(Aggr, KeysThatFallOrSpreadToBothSidesStayInTheArray) {
    std::vector<std::string> keys;
    for (int i = 0; i < 4000; ++i) keys.push_back(std::to_string(i % 2 ? 5 * i : -3 * i));
    const auto table = TableOf({ColumnOf(L"long", L"k", keys)});
    const auto aggr = MakeRef<Aggr>(MakeRef<Scan>(table), ColumnNames{L"k"}, std::vector<RefCntPtr<Exp>>{});
    EXPECT_EQ(aggr->Build(64), 4000u);
    EXPECT_EQ(Cells(*aggr->GetColumn(L"k")), keys);
}

TEST(Aggr, AnEmptyInputHasNoGroupsWithOrWithoutKeys) {
    const auto table = TableOf({ColumnOf(L"text", L"k", {}), ColumnOf(L"long", L"v", {})});
    for (const ColumnNames& keys : {ColumnNames{L"k"}, ColumnNames{}}) {
        const auto aggr = MakeRef<Aggr>(MakeRef<Scan>(table), keys, CountAndSum());
        EXPECT_EQ(aggr->Build(10), 0u);
        for (const std::wstring& name : aggr->GetColumnNames()) EXPECT_EQ(aggr->GetColumn(name)->GetCount(), 0u);
    }
    // Rows that no page selects are no rows.
    const auto rows = TableOf({ColumnOf(L"text", L"k", {"a", "b"}), ColumnOf(L"long", L"v", {"1", "2"})});
    const auto aggr = MakeRef<Aggr>(MakeRef<SampleSelect>(rows, 0.0, seed), ColumnNames{}, CountAndSum());
    EXPECT_EQ(aggr->Build(1), 0u);
}

TEST(Aggr, WithoutKeysAllRowsAreOneGroup) {
    const auto table = TableOf({ColumnOf(L"long", L"v", {"4", "NULL", "-1", "9"})});
    for (const unsigned pageSize : {1u, 3u, 100u}) {
        const auto aggr = MakeRef<Aggr>(MakeRef<Scan>(table), ColumnNames{}, CountAndSum());
        EXPECT_EQ(aggr->Build(pageSize), 1u);
        EXPECT_EQ(Rows(*aggr, {L"n", L"present", L"s"}), (TextRows{{"4", "3", "12"}}));
    }
}

TEST(Aggr, AggregatesOfEveryTypeSkipNulls) {
    const std::map<std::wstring, Texts> values = {
        {L"tiny", {"3", "NULL", "-5", "NULL"}},      {L"short", {"300", "NULL", "-5", "NULL"}},
        {L"long", {"70000", "NULL", "-5", "NULL"}},  {L"bigint", {"7000000000", "NULL", "-5", "NULL"}},
        {L"float", {"2.5", "NULL", "-5.5", "NULL"}}, {L"double", {"2.5", "NULL", "-5.5", "NULL"}},
    };
    for (const auto& [type, cells] : values) {
        SCOPED_TRACE(std::string(type.begin(), type.end()));
        const auto table = TableOf({ColumnOf(L"tiny", L"k", {"1", "1", "1", "2"}), ColumnOf(type, L"v", cells)});
        const std::vector<RefCntPtr<Exp>> measures = {Measure(L"low", L"min", L"v"), Measure(L"high", L"max", L"v"),
                                                      Measure(L"sum", L"sum", L"v"), Measure(L"total", L"total", L"v"),
                                                      Measure(L"n", L"count", L"v"), Measure(L"some", L"any", L"v")};
        const auto aggr = MakeRef<Aggr>(MakeRef<Scan>(table), ColumnNames{L"k"}, measures);
        aggr->Build(2);
        const TextRows rows = Rows(*aggr, {L"low", L"high", L"n", L"total"});
        const bool real = type == L"float" || type == L"double";
        const std::string sum = real ? "-3" : std::to_string(std::stoll(cells[0]) - 5);
        EXPECT_EQ(rows[0], (Texts{cells[2], cells[0], "2", sum}));
        // A group without a value: nulls, but for counts and totals.
        EXPECT_EQ(rows[1], (Texts{"NULL", "NULL", "0", "0"}));
        EXPECT_EQ(Cells(*aggr->GetColumn(L"sum")), (Texts{sum, "NULL"}));
        EXPECT_NE(Cells(*aggr->GetColumn(L"some"))[0], "NULL");
        EXPECT_EQ(Cells(*aggr->GetColumn(L"some"))[1], "NULL");
    }
}

TEST(Aggr, TextIsAggregatedByValue) {
    const auto table = TableOf({ColumnOf(L"tiny", L"k", {"1", "2", "1", "1", "3"}),
                                ColumnOf(L"text", L"v", {"pear", "fig", "apple", "NULL", "NULL"})});
    const auto aggr =
        MakeRef<Aggr>(MakeRef<Scan>(table), ColumnNames{L"k"},
                      std::vector<RefCntPtr<Exp>>{Measure(L"low", L"min", L"v"), Measure(L"high", L"max", L"v")});
    aggr->Build(2);
    EXPECT_EQ(Rows(*aggr, {L"low", L"high"}), (TextRows{{"'apple'", "'pear'"}, {"'fig'", "'fig'"}, {"NULL", "NULL"}}));
}

TEST(Aggr, MoreGroupsThanOneWindowHolds) {
    const uint64_t limit = DataStream::s_maxlimit;
    DataStream::s_maxlimit = 1u << 16;  // windows of 8192 numbers
    std::vector<std::string> keys;
    for (int i = 0; i < 60000; ++i) keys.push_back(std::to_string(i * 7919LL % 30011));
    const auto table = TableOf({ColumnOf(L"long", L"k", keys), ColumnOf(L"long", L"v", keys)});
    const auto aggr = MakeRef<Aggr>(MakeRef<SampleSelect>(table, 1, seed), ColumnNames{L"k"}, CountAndSum());
    EXPECT_EQ(aggr->Build(1024), 30011u);
    DataStream::s_maxlimit = limit;
    const TextRows rows = Rows(*aggr, {L"k", L"n", L"s"});
    for (size_t i = 0; i < rows.size(); ++i) {
        const long long times = i < 60000 - 30011 ? 2 : 1;
        ASSERT_EQ(rows[i], (Texts{keys[i], std::to_string(times), std::to_string(times * std::stoll(keys[i]))}));
    }
}

TEST(Aggr, TheGroupLimitEndsTheReading) {
    std::vector<std::string> keys;
    for (int i = 0; i < 1000; ++i) keys.push_back(std::to_string(i));
    const auto table = TableOf({ColumnOf(L"long", L"k", keys)});
    const auto source = MakeRef<Scan>(table);
    const auto aggr = MakeRef<Aggr>(source, ColumnNames{L"k"}, std::vector<RefCntPtr<Exp>>{}, 25);
    EXPECT_EQ(aggr->Build(10), 30u);
    EXPECT_EQ(source->GetCursor(), 30u);
}

TEST(Aggr, DescribesItsColumnsBeforeItIsBuilt) {
    const auto table = TableOf({ColumnOf(L"text", L"k", {"a"}), ColumnOf(L"long", L"v", {"1"})});
    const auto aggr = MakeRef<Aggr>(MakeRef<Scan>(table), ColumnNames{L"k"}, CountAndSum());
    EXPECT_EQ(aggr->GetColumnNames(), (ColumnNames{L"k", L"n", L"present", L"s"}));
    EXPECT_TRUE(aggr->DescribeColumn(L"k")->HasProperty(usrpropkey::unique));
    EXPECT_EQ(aggr->DescribeColumn(L"k")->GetType(), table->GetColumn(L"k")->GetType());
    EXPECT_EQ(StatusOf([&] { aggr->DescribeColumn(L"x"); }), status::Aggr_DescribeColumn);
    EXPECT_EQ(StatusOf([&] { aggr->GetColumn(L"x"); }), status::Aggr_GetColumn);
    EXPECT_EQ(StatusOf([&] { MakeRef<Aggr>(nullptr, ColumnNames{}, CountAndSum()); }), status::Aggr_source);
}

TEST(Aggr, ACancelOfTheScanEndsTheBuild) {
    const auto table = TableOf({ColumnOf(L"long", L"v", {"1", "2"})});
    const auto source = MakeRef<SampleSelect>(table, 1, seed);
    source->Cancel();
    const auto aggr = MakeRef<Aggr>(source, ColumnNames{L"v"}, CountAndSum());
    EXPECT_THROW(aggr->Build(1), Operator::CancelledException);
}

}  // namespace
}  // namespace qve
