#include "algebra/Scan.h"

#include <gtest/gtest.h>

#include "algebra/FlowTable.h"
#include "algebra/NoFlow.h"
#include "algebra/Renamespace.h"
#include "algebra/Restrict.h"
#include "algebra/RestrictedTable.h"
#include "algebra/status.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

using Cells = std::vector<std::vector<std::string>>;

RefCntPtr<LeafTable> Numbers(unsigned rows) {
    std::vector<std::string> values;
    for (unsigned row = 0; row < rows; ++row) values.push_back(row % 5 == 3 ? "NULL" : std::to_string(row));
    std::vector<std::string> texts;
    for (unsigned row = 0; row < rows; ++row) texts.push_back("text " + std::to_string(row % 3));
    return TableOf({ColumnOf(L"long", L"a", values), ColumnOf(L"text", L"t", texts)});
}

TEST(ScanTest, PagesOfAnySizeGiveEveryRowOnce) {
    for (const unsigned rows : {0u, 1u, 6u, 7u, 8u, 2050u}) {
        for (const unsigned pageSize : {1u, 7u, 1024u}) {
            Scan scan(Numbers(rows));
            const auto cells = Drain(scan, {L"a", L"t"}, pageSize);
            ASSERT_EQ(cells.size(), rows);
            for (unsigned row = 0; row < rows; ++row) {
                EXPECT_EQ(cells[row][0], row % 5 == 3 ? "NULL" : std::to_string(row));
                EXPECT_EQ(cells[row][1], "'text " + std::to_string(row % 3) + "'");
            }
            EXPECT_EQ(scan.GetCursor(), rows);
        }
    }
}

TEST(ScanTest, CursorsRestartAndNextOfNothing) {
    Scan scan(Numbers(10));
    EXPECT_EQ(scan.Next(0), 0u);
    EXPECT_EQ(scan.GetExtent(), 0u);
    EXPECT_EQ(scan.Next(7), 7u);
    EXPECT_EQ(scan.GetSelection(), nullptr);
    EXPECT_EQ(scan.GetSelectionCount(), 7u);
    EXPECT_EQ(scan.Next(7), 3u);
    EXPECT_EQ(scan.GetPreviousCursor(), 7u);
    EXPECT_EQ(scan.GetCursor(), 10u);
    scan.ResetCursor();
    EXPECT_EQ(Drain(scan, {L"a"}, 4).size(), 10u);
}

// The rank comes on demand, and says how the rows were numbered.
TEST(ScanTest, RankIsTheRowNumber) {
    Scan scan(Numbers(9), ColumnNames{L"a", Column::nameRank});
    const auto cells = Drain(scan, {Column::nameRank}, 4);
    ASSERT_EQ(cells.size(), 9u);
    EXPECT_EQ(cells[8][0], "8");
    EXPECT_FALSE(Numbers(9)->GetColumnNames().contains(Column::nameRank));
}

TEST(ScanTest, CancelEndsTheScan) {
    Scan scan(Numbers(100));
    EXPECT_EQ(scan.Next(10), 10u);
    scan.SetCancelled();
    EXPECT_THROW(scan.Next(10), Operator::CancelledException);
}

// Says it counts more rows than its columns have.
class TallTable : public DelegatedTable {
public:
    using DelegatedTable::DelegatedTable;
    uint64_t GetCount() const override { return m_delegate->GetCount() + 1; }
    uint64_t Build(unsigned pageSize) override { return m_delegate->Build(pageSize) + 1; }
};

TEST(ScanTest, ShortColumnIsRefused) {
    Scan scan(MakeRef<TallTable>(Numbers(4)), ColumnNames{L"a"});
    try {
        scan.Next(1);
        FAIL() << "no exception";
    } catch (const QVE_RangeError& fault) {
        EXPECT_EQ(fault.GetStatus(), 40401);
        EXPECT_STREQ(fault.what(), "Scan::Next: Mismatched row counts: Table has 5 rows: Column: [a] has 4 rows");
    }
}

TEST(DataFlowTest, UnknownNamesAndMissingSources) {
    Scan scan(Numbers(1));
    EXPECT_EQ(StatusOf([&] { scan.GetColumn(L"x"); }), 40102);
    EXPECT_EQ(StatusOf([&] { scan.DescribeColumn(L"x"); }), 40101);
    const auto restrict = MakeRef<Restrict>(nullptr, ColumnNames{L"a"});
    EXPECT_EQ(StatusOf([&] { restrict->GetColumn(L"a"); }), 40103);
    EXPECT_EQ(StatusOf([&] { restrict->DescribeColumn(L"a"); }), 40104);
    EXPECT_EQ(StatusOf([&] { restrict->ResetCursor(); }), 40105);
    EXPECT_EQ(restrict->Next(10), 0u);
    EXPECT_EQ(StatusOf([&] { Numbers(1)->GetColumn(L"x"); }), 40240);
    EXPECT_EQ(StatusOf([&] { Numbers(1)->DescribeColumn(L"x"); }), status::LeafTable_DescribeColumn);
    EXPECT_EQ(StatusOf([] { FlowTable table(nullptr); }), 40181);
}

TEST(DataFlowTest, TableWithoutColumnsHasNoRows) {
    const auto table = MakeRef<LeafTable>(L"empty", ColumnMap());
    EXPECT_EQ(table->Build(10), 0u);
    Scan scan(table);
    EXPECT_EQ(scan.Next(10), 0u);
}

TEST(DataFlowTest, RestrictionsHideColumns) {
    const auto flow = MakeRef<Restrict>(MakeRef<Scan>(Numbers(5)), ColumnNames{L"t"});
    EXPECT_EQ(flow->GetColumnNames(), ColumnNames{L"t"});
    EXPECT_EQ(StatusOf([&] { flow->GetColumn(L"a"); }), 40102);
    EXPECT_EQ(Drain(*flow, {L"t"}, 2).size(), 5u);

    RestrictedTable table(Numbers(5), ColumnNames{L"a"});
    EXPECT_EQ(table.Build(1), 5u);
    EXPECT_EQ(table.GetColumnCount(), 1u);
    EXPECT_EQ(StatusOf([&] { table.GetColumn(L"t"); }), 40380);
    EXPECT_EQ(StatusOf([&] { table.DescribeColumn(L"t"); }), status::RestrictedTable_DescribeColumn);
    EXPECT_EQ(table.GetColumn(L"a")->GetCount(), 5u);
}

TEST(DataFlowTest, RenamesAndNoFlow) {
    Renamespace renamed(Numbers(3), {{L"a", L"b"}, {L"absent", L"c"}});
    EXPECT_EQ(renamed.GetColumnNames(), (ColumnNames{L"b", L"t"}));
    EXPECT_EQ(renamed.GetColumn(L"b")->GetName(), L"a");
    EXPECT_EQ(StatusOf([&] { renamed.GetColumn(L"a"); }), status::Renamespace_GetColumn);

    const auto scan = MakeRef<Scan>(Numbers(5));
    scan->Next(3);
    NoFlow page(scan);
    EXPECT_EQ(page.Next(3), 3u);
    EXPECT_EQ(page.GetSelectionCount(), 3u);
    EXPECT_EQ(scan->GetCursor(), 3u);
}

TEST(NamespaceTest, SortSpecsAreInTheOrderOfTheirPositions) {
    const auto a = ColumnOf(L"long", L"a", {"1"});
    const auto b = ColumnOf(L"long", L"b", {"1"});
    a->SetProperty(usrpropkey::sort_position, L"10");
    b->SetProperty(usrpropkey::sort_position, L"9");
    b->SetProperty(usrpropkey::sort_sense, L"desc");
    const auto table = TableOf({a, b, ColumnOf(L"long", L"c", {"1"})});
    EXPECT_EQ(Namespace::BuildSortSpecs(*table), (std::vector<Namespace::SortSpec>{{L"b", true}, {L"a", false}}));
}

}  // namespace
}  // namespace qve
