#include "algebra/Select.h"

#include <gtest/gtest.h>

#include "algebra/ColumnExp.h"
#include "algebra/MapExp.h"
#include "algebra/Scan.h"
#include "algebra/SelectExp.h"
#include "algebra/status.h"
#include "system/QuillonException.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

RefCntPtr<LeafTable> Numbers(unsigned rows) {
    std::vector<std::string> values;
    for (unsigned row = 0; row < rows; ++row) values.push_back(row % 10 == 9 ? "NULL" : std::to_string(row));
    return TableOf({ColumnOf(L"long", L"a", values)});
}

RefCntPtr<Exp> Below(const std::string& limit) {
    return MakeRef<SelectBinaryExp>(L"lt", MakeRef<ColumnExp>(L"a"), Literal(L"long", limit));
}
RefCntPtr<Exp> AtLeast(const std::string& limit) {
    return MakeRef<SelectBinaryExp>(L"ge", MakeRef<ColumnExp>(L"a"), Literal(L"long", limit));
}

TEST(SelectTest, NarrowsPageByPage) {
    for (const unsigned pageSize : {1u, 7u, 1024u}) {
        const auto flow = MakeRef<Select>(MakeRef<Select>(MakeRef<Scan>(Numbers(2000)), AtLeast("15")), Below("1500"));
        const auto cells = Drain(*flow, {L"a"}, pageSize);
        ASSERT_EQ(cells.size(), 1485u - 149u) << pageSize;  // from 15 to 1499 there are 149 nulls
        EXPECT_EQ(cells.front()[0], "15");
        EXPECT_EQ(cells.back()[0], "1498");
        EXPECT_EQ(flow->GetPassed(), cells.size());
        flow->ResetCursor();
        EXPECT_EQ(flow->GetPassed(), 0u);
        EXPECT_EQ(Drain(*flow, {L"a"}, pageSize), cells);
    }
}

TEST(SelectTest, PageWithoutSelectedRowIsNotTheEnd) {
    Select flow(MakeRef<Scan>(Numbers(20)), AtLeast("15"));
    EXPECT_EQ(flow.Next(10), 10u);
    EXPECT_EQ(flow.GetSelectionCount(), 0u);
    EXPECT_EQ(flow.Next(10), 10u);
    EXPECT_EQ(flow.GetSelectionCount(), 4u);
    EXPECT_EQ(flow.Next(10), 0u);
}

TEST(SelectTest, KeepsTheSourcesSelectionWhenAllPass) {
    Select flow(MakeRef<Scan>(Numbers(9)), AtLeast("0"));
    EXPECT_EQ(flow.Next(9), 9u);
    EXPECT_EQ(flow.GetSelection(), nullptr);
    EXPECT_EQ(flow.GetSelectionCount(), 9u);
}

TEST(SelectTest, ConstantPredicates) {
    const auto scan = MakeRef<Scan>(Numbers(9));
    const auto never = MakeRef<SelectBinaryExp>(L"gt", Literal(L"long", "1"), Literal(L"long", "2"));
    Select nothing(scan, never);
    EXPECT_EQ(nothing.Next(5), 0u);
    EXPECT_EQ(scan->GetCursor(), 0u);  // the source was not pulled

    Select nullFlow(scan, MakeRef<MapBinaryExp>(L"", L"eq", Literal(L"long", "1"), Literal(L"long", "NULL")));
    EXPECT_EQ(nullFlow.Next(5), 0u);

    Select all(scan, Literal(L"bit", "t"));
    EXPECT_EQ(Drain(all, {L"a"}, 4).size(), 9u);
}

TEST(SelectTest, NullConstantSelectsNothing) {
    Select flow(MakeRef<Scan>(Numbers(20)), Below("NULL"));
    EXPECT_TRUE(Drain(flow, {L"a"}, 7).empty());
}

TEST(SelectTest, MapPredicatesSelectToo) {
    Select flow(MakeRef<Scan>(Numbers(20)),
                MakeRef<MapBinaryExp>(L"", L"lt", MakeRef<ColumnExp>(L"a"), Literal(L"long", "5")));
    EXPECT_EQ(Drain(flow, {L"a"}, 7).size(), 5u);
}

TEST(SelectTest, BreaksDensity) {
    const auto table = Numbers(20);
    table->GetColumn(L"a")->SetProperty(usrpropkey::dense, L"0");
    Select flow(MakeRef<Scan>(table), AtLeast("3"));
    EXPECT_FALSE(flow.DescribeColumn(L"a")->HasProperty(usrpropkey::dense));
    EXPECT_EQ(Drain(flow, {L"a"}, 7).size(), 15u);
    EXPECT_FALSE(flow.GetColumn(L"a")->HasProperty(usrpropkey::dense));
    EXPECT_TRUE(table->GetColumn(L"a")->HasProperty(usrpropkey::dense));
}

TEST(SelectTest, NeedsAPredicate) {
    EXPECT_EQ(StatusOf([] { Select flow(MakeRef<Scan>(Numbers(1)), nullptr); }), status::Select_Select);
}

}  // namespace
}  // namespace qve
