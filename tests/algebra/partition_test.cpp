// Flows that are read partition by partition, and columns that take the place of others.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "algebra/Aggr.h"
#include "algebra/AggrExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/PartitionRestart.h"
#include "algebra/PartitionSplit.h"
#include "algebra/Scan.h"
#include "algebra/Select.h"
#include "algebra/SelectExp.h"
#include "algebra/Update.h"
#include "algebra/status.h"
#include "os/BudgetedMemory.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

using Texts = std::vector<std::string>;
using TextRows = std::vector<Texts>;

// Runs of random length of random keys "p", among them nulls, with a column "v" of the row's number.
RefCntPtr<LeafTable> Runs(const std::wstring& type, unsigned rows, unsigned longest) {
    std::mt19937 random(17);
    const Texts values = Cells(*SampleColumn(type, L"p", 30, {.distinct = 12, .nulls = 0.2}, random));
    Texts keys, numbers;
    for (size_t at = 0; keys.size() < rows; ++at) {
        const std::string& value = values[at % values.size()];
        if (!keys.empty() && keys.back() == value) continue;
        for (unsigned i = 0, length = 1 + random() % longest; i < length && keys.size() < rows; ++i) {
            keys.push_back(value);
            numbers.push_back(std::to_string(numbers.size()));
        }
    }
    return TableOf({ColumnOf(type, L"p", keys), ColumnOf(L"long", L"v", numbers)});
}

TEST(PartitionSplitTest, EndsAtEachChangeOfTheValue) {
    for (const std::wstring type : {L"long", L"text", L"double", L"bit"}) {
        for (const unsigned pageSize : {1u, 10u, 1024u}) {
            for (const double share : {0.5, 1.0}) {
                SampleSelect plain(Runs(type, 1500, 40), share, 9);
                std::vector<TextRows> expected;
                for (Texts& row : Drain(plain, {L"p", L"v"}, pageSize)) {
                    if (expected.empty() || expected.back().back()[0] != row[0]) expected.emplace_back();
                    expected.back().push_back(std::move(row));
                }
                PartitionSplit split(MakeRef<SampleSelect>(Runs(type, 1500, 40), share, 9), L"p");
                for (int round = 0; round < 2; ++round) {
                    std::vector<TextRows> found;
                    do {
                        found.push_back(Drain(split, {L"p", L"v"}, pageSize));
                    } while (split.Restart(pageSize));
                    EXPECT_EQ(found, expected);
                    EXPECT_FALSE(split.Restart(pageSize));
                    split.ResetCursor();
                }
            }
        }
    }
}

TEST(PartitionSplitTest, LeavesTheRestOfAPartitionOut) {
    PartitionSplit split(MakeRef<Scan>(TableOf({ColumnOf(L"long", L"p", {"1", "1", "1", "2", "3", "3"})})), L"p");
    EXPECT_EQ(NextRows(split, {L"p"}, 2), (TextRows{{"1"}, {"1"}}));
    EXPECT_FALSE(split.HasNext());
    EXPECT_TRUE(split.Restart(2));
    EXPECT_EQ(Drain(split, {L"p"}, 2), (TextRows{{"2"}}));
    EXPECT_TRUE(split.HasNext());
    const usratom three = Atom(L"long", "3");
    EXPECT_EQ(three.type()->compare(split.LookupPartition(), three), 0);
    EXPECT_TRUE(split.Restart(2));
    EXPECT_EQ(Drain(split, {L"p"}, 2), (TextRows{{"3"}, {"3"}}));
    EXPECT_FALSE(split.Restart(2));

    PartitionSplit empty(MakeRef<Scan>(TableOf({ColumnOf(L"long", L"p", {})})), L"p");
    EXPECT_EQ(empty.Next(10), 0u);
    EXPECT_FALSE(empty.Restart(10));
}

TEST(PartitionRestartTest, GoesThroughAllPartitions) {
    const auto positive = [](RefCntPtr<DataFlow> flow) {
        return MakeRef<Select>(std::move(flow),
                               MakeRef<SelectBinaryExp>(L"gt", MakeRef<ColumnExp>(L"v"), Literal(L"long", "700")));
    };
    for (const unsigned pageSize : {1u, 100u}) {
        const auto plain = positive(MakeRef<Scan>(Runs(L"text", 1500, 30)));
        PartitionRestart whole(positive(MakeRef<PartitionSplit>(MakeRef<Scan>(Runs(L"text", 1500, 30)), L"p")));
        EXPECT_EQ(Drain(whole, {L"p", L"v"}, pageSize), Drain(*plain, {L"p", L"v"}, pageSize));
    }
    EXPECT_EQ(StatusOf([] { PartitionRestart(MakeRef<Scan>(Runs(L"long", 10, 2))); }), status::PartitionRestart_source);
    EXPECT_EQ(StatusOf([] { PartitionSplit(MakeRef<Scan>(Runs(L"long", 10, 2)), L"q"); }),
              status::PartitionSplit_LookupPartition);
}

// By the column that makes the partitions, where a value comes in one of them only, and by another.
TEST(PartitionSplitTest, GroupsAreThoseOfAllRows) {
    Texts keys, other, values;
    for (unsigned row = 0; row < 20000; ++row) {
        keys.push_back(std::to_string(row / 500 * 1000003));
        other.push_back(std::to_string(row * 7919 % 3000 * 1000003ull));
        values.push_back(std::to_string(row % 10));
    }
    const auto table = [&] {
        return TableOf(
            {ColumnOf(L"bigint", L"p", keys), ColumnOf(L"bigint", L"k", other), ColumnOf(L"long", L"v", values)});
    };
    const auto groups = [](RefCntPtr<DataFlow> flow, const ColumnNames& names) {
        Aggr aggr(std::move(flow), names, {MakeRef<AggrBinaryExp>(L"s", L"sum", MakeRef<ColumnExp>(L"v"))});
        aggr.Build(1024);
        std::vector<std::wstring> shown(names.begin(), names.end());
        shown.push_back(L"s");
        return Rows(aggr, shown);
    };
    for (const ColumnNames& names : {ColumnNames{L"p", L"k"}, ColumnNames{L"k"}, ColumnNames{}}) {
        const TextRows expected = groups(MakeRef<Scan>(table()), names);
        EXPECT_EQ(groups(MakeRef<PartitionSplit>(MakeRef<Scan>(table()), L"p"), names), expected);
        BudgetedMemory::SetBudget(1 << 20);
        EXPECT_EQ(groups(MakeRef<PartitionSplit>(MakeRef<Scan>(table()), L"p"), names), expected);
        BudgetedMemory::SetBudget(0);
    }
}

TEST(UpdateTest, PutsAColumnInThePlaceOfAnother) {
    const auto table = TableOf({ColumnOf(L"double", L"d", {"1.5", "NULL", "3"}),
                                ColumnOf(L"long", L"l", {"7", "8", "NULL"}), ColumnOf(L"text", L"t", {"a", "b", "c"})});
    Update flow(MakeRef<Scan>(table), {{L"d", L"l"}, {L"t", L"l"}});
    EXPECT_EQ(flow.DescribeColumn(L"d")->GetDataType(), table->GetColumn(L"d")->GetDataType());
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(Drain(flow, {L"d", L"l", L"t"}, 2),
                  (TextRows{{"7", "7", "'7'"}, {"8", "8", "'8'"}, {"NULL", "NULL", "NULL"}}));
        flow.ResetCursor();
    }
    EXPECT_EQ(StatusOf([&] { Update(MakeRef<Scan>(table), {{L"d", L"x"}}); }), status::Update_pairs);
    EXPECT_EQ(StatusOf([&] { Update(MakeRef<Scan>(table), {{L"d", L"l"}, {L"d", L"t"}}); }), status::Update_pairs);
    EXPECT_EQ(StatusOf([] { Update(nullptr, {}); }), status::Update_source);
}

}  // namespace
}  // namespace qve
