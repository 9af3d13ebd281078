#include "algebra/Project.h"

#include <gtest/gtest.h>

#include "algebra/ColumnExp.h"
#include "algebra/DataExp.h"
#include "algebra/FunctionExp.h"
#include "algebra/MapExp.h"
#include "algebra/Restrict.h"
#include "algebra/Scan.h"
#include "algebra/Select.h"
#include "algebra/SelectExp.h"
#include "algebra/status.h"
#include "system/QuillonException.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

RefCntPtr<LeafTable> Numbers(unsigned rows) {
    std::vector<std::string> values;
    std::vector<std::string> texts;
    for (unsigned row = 0; row < rows; ++row) {
        values.push_back(row % 4 == 3 ? "NULL" : std::to_string(row));
        texts.push_back(row % 6 == 5 ? "NULL" : "t" + std::to_string(row % 5));
    }
    return TableOf({ColumnOf(L"long", L"a", values), ColumnOf(L"text", L"t", texts)});
}

RefCntPtr<Exp> Plus(const std::wstring& name, RefCntPtr<Exp> left, RefCntPtr<Exp> right) {
    return MakeRef<MapBinaryExp>(name, L"plus", std::move(left), std::move(right));
}

// A function is computed once for each run of equal values, as long as runs are long: first they are, then not.
TEST(ProjectTest, RunsOfValuesGiveTheSameAsRows) {
    std::vector<std::string> days;
    for (unsigned row = 0; row < 6000; ++row) {
        constexpr unsigned newYear = 2460310;  // of 2024
        const unsigned day = newYear + (row < 3000 ? row / 100 : row * 7 % 400);
        days.push_back(row % 500 == 0 ? "NULL" : std::to_string(day));
    }
    const auto table = TableOf({ColumnOf(L"date", L"d", days)});
    const auto days_of = [&](unsigned pageSize) {
        const auto exp = [](const wchar_t* op) { return MakeRef<MapUnaryExp>(op, op, MakeRef<ColumnExp>(L"d")); };
        Project flow(MakeRef<Scan>(table), {exp(L"day"), exp(L"month"), exp(L"truncmonth")});
        return Drain(flow, {L"day", L"month", L"truncmonth"}, pageSize);
    };
    const auto expected = days_of(1);
    ASSERT_EQ(expected[0][0], "NULL");
    ASSERT_EQ(expected[150], (std::vector<std::string>{"2", "1", "2024-01-01"}));
    for (const unsigned pageSize : {7u, 64u, 1024u}) EXPECT_EQ(days_of(pageSize), expected);
}

TEST(ProjectTest, ComputesTheSelectedRows) {
    for (const unsigned pageSize : {1u, 7u, 1024u}) {
        const auto low =
            MakeRef<Select>(MakeRef<Scan>(Numbers(100)),
                            MakeRef<SelectBinaryExp>(L"ge", MakeRef<ColumnExp>(L"a"), Literal(L"long", "40")));
        const auto counted = MakeRef<CountingExp>(MakeRef<ColumnExp>(L"a"));
        const auto flow =
            MakeRef<Project>(low, std::vector<RefCntPtr<Exp>>{Plus(L"b", counted, Literal(L"long", "1"))});
        EXPECT_EQ(flow->GetColumnNames(), (ColumnNames{L"a", L"b", L"t"}));
        const auto cells = Drain(*flow, {L"a", L"b"}, pageSize);
        ASSERT_EQ(cells.size(), 45u);
        for (const auto& row : cells) EXPECT_EQ(std::stoi(row[1]), std::stoi(row[0]) + 1);
        EXPECT_EQ(counted->rows, 45u);
    }
}

TEST(ProjectTest, MayHideAColumnOfTheSource) {
    Project flow(MakeRef<Scan>(Numbers(3)), {Plus(L"a", MakeRef<ColumnExp>(L"a"), MakeRef<ColumnExp>(L"a"))});
    EXPECT_EQ(Drain(flow, {L"a"}, 2), (std::vector<std::vector<std::string>>{{"0"}, {"2"}, {"4"}}));
}

// Consumers find a value in every row, also when a later page is longer.
TEST(ProjectTest, WritesConstantsOut) {
    const auto one = Literal(L"long", "1");
    one->SetName(L"one");
    const auto text = Literal(L"text", "same");
    text->SetName(L"text");
    const auto sum = MakeRef<CountingExp>(Plus(L"sum", Literal(L"long", "1"), Literal(L"long", "2")));
    Project flow(MakeRef<Scan>(Numbers(20)), {one, text, sum});
    EXPECT_NE(flow.GetColumn(L"one")->GetStorageName(), Column::storageVal);
    EXPECT_EQ(flow.Next(3), 3u);
    const auto cells = Drain(flow, {L"one", L"text", L"sum"}, 10);
    ASSERT_EQ(cells.size(), 17u);
    for (const auto& row : cells) EXPECT_EQ(row, (std::vector<std::string>{"1", "'same'", "3"}));
    EXPECT_EQ(sum->calls, 1u);  // one evaluation for all pages
}

TEST(ProjectTest, ConstantArgumentsAreEvaluatedOnce) {
    const auto constant = MakeRef<CountingExp>(Literal(L"long", "5"));
    Project flow(MakeRef<Scan>(Numbers(20)), {Plus(L"b", MakeRef<ColumnExp>(L"a"), constant)});
    EXPECT_EQ(Drain(flow, {L"b"}, 3).size(), 20u);
    EXPECT_EQ(constant->calls, 1u);
}

TEST(ProjectTest, ColumnsAndTokensAreShared) {
    const auto copy = MakeRef<ColumnExp>(L"t");
    copy->SetName(L"copy");
    const auto tokens = MakeRef<DataExp>(MakeRef<ColumnExp>(L"t"));
    tokens->SetName(L"tokens");
    Project flow(MakeRef<Scan>(Numbers(20)), {copy, tokens});
    EXPECT_EQ(flow.Next(7), 7u);
    const Column& source = *flow.GetColumn(L"t");
    EXPECT_EQ(flow.GetColumn(L"copy")->GetInput(0).data, source.GetInput(0).data);
    EXPECT_EQ(flow.GetColumn(L"copy")->GetDict(), source.GetDict());
    EXPECT_EQ(flow.GetColumn(L"tokens")->GetInput(0).data, source.GetInput(0).data);
    EXPECT_FALSE(flow.GetColumn(L"tokens")->IsCompressed());
    const auto cells = Drain(flow, {L"t", L"copy"}, 5);
    for (const auto& row : cells) EXPECT_EQ(row[0], row[1]);
}

TEST(ProjectTest, FunctionOfTheInput) {
    Project flow(MakeRef<Scan>(Numbers(5), ColumnNames{L"a", Column::nameRank}),
                 {MakeRef<FunctionExp>(L"row", Column::nameRank)});
    EXPECT_EQ(Drain(flow, {L"row"}, 2).back()[0], "4");
}

TEST(ProjectTest, UnknownKernelsAreRefusedWithTheirSignature) {
    Project flow(MakeRef<Scan>(Numbers(5)), {MakeRef<MapUnaryExp>(L"x", L"frobnicate", MakeRef<ColumnExp>(L"a"))});
    try {
        flow.Next(5);
        FAIL() << "no exception";
    } catch (const QVE_InvalidArgument& fault) {
        EXPECT_EQ(fault.GetStatus(), 40354);
        EXPECT_STREQ(fault.what(), "PrimitiveExp::MakePrimitive: frobnicate_long_col");
    }
}

TEST(ProjectTest, OnlyAggregatesAggregate) {
    EXPECT_EQ(StatusOf([] { MakeRef<ColumnExp>(L"a")->Aggregate(0, {}, nullptr); }), 40158);
    EXPECT_EQ(StatusOf([] { Literal(L"long", "1")->Aggregate(0, {}, nullptr); }), 40158);
}

}  // namespace
}  // namespace qve
