#include "algebra/Save.h"

#include <gtest/gtest.h>

#include "algebra/FlowTable.h"
#include "algebra/LeafTable.h"
#include "algebra/Scan.h"
#include "os/OS.h"
#include "os/Path.h"
#include "storage/DatabaseSchema.h"
#include "storage/SimpleDatabase.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"
#include "tests/support/ScratchFolder.h"

namespace qve {
namespace {

class SaveTest : public testing::Test {
protected:
    SaveTest() {
        const auto database = MakeRef<SimpleDatabase>(m_path);
        database->CreateDatabase();
        database->CreateSchema(L"s");
        database->CreateTable(L"t", L"s");
    }

    void Store(const std::vector<RefCntPtr<Column>>& columns) {
        const auto database = MakeRef<SimpleDatabase>(m_path);
        Save save(MakeRef<FlowTable>(MakeRef<Scan>(TableOf(columns))), database, L"s", L"t");
        const uint64_t rows = columns[0]->GetCount();
        EXPECT_EQ(save.Build(2), rows);
        save.ReleaseDelegate();
        EXPECT_EQ(save.Build(2), rows);
    }

    const test::ScratchFolder m_scratch;
    const std::wstring m_path = (m_scratch.GetPath() / "base").wstring();
};

TEST_F(SaveTest, StoredTableReadsBackFromTheCatalog) {
    const auto n = ColumnOf(L"long", L"n", {"1", "NULL", "3"});
    const auto t = ColumnOf(L"text", L"t", {"a", "b", "NULL"});
    n->SetProperty(usrpropkey::ordinal, L"1");
    t->SetProperty(usrpropkey::ordinal, L"0");
    Store({n, t});

    const auto database = MakeRef<SimpleDatabase>(m_path);
    EXPECT_EQ(database->GetColumnNames(L"t", L"s"), (std::vector<std::wstring>{L"t", L"n"}));
    const auto table = MakeRef<LeafTable>(*database->GetSchema(L"s"), L"t");
    EXPECT_FALSE(table->IsCounted());
    EXPECT_EQ(table->DescribeColumn(L"n")->GetType()->name(), L"long");
    Scan scan(table);
    EXPECT_EQ(Drain(scan, {L"n", L"t"}, 2),
              (std::vector<std::vector<std::string>>{{"1", "'a'"}, {"NULL", "'b'"}, {"3", "NULL"}}));
    EXPECT_TRUE(table->IsCounted());
}

// A count needs no column, yet there are rows.
TEST_F(SaveTest, RowsOfATableWithoutWantedColumns) {
    Store({ColumnOf(L"long", L"n", {"1", "2", "3"})});
    const auto database = MakeRef<SimpleDatabase>(m_path);
    Scan scan(MakeRef<LeafTable>(*database->GetSchema(L"s"), L"t", ColumnNames()));
    EXPECT_EQ(scan.Next(2), 2u);
    EXPECT_EQ(scan.Next(2), 1u);
    EXPECT_EQ(scan.Next(2), 0u);
}

TEST_F(SaveTest, SavingAgainReplaces) {
    Store({ColumnOf(L"text", L"t", {"a"})});
    Store({ColumnOf(L"text", L"t", {"b", "c"})});
    const auto database = MakeRef<SimpleDatabase>(m_path);
    Scan scan(MakeRef<LeafTable>(*database->GetSchema(L"s"), L"t"));
    EXPECT_EQ(Drain(scan, {L"t"}), (std::vector<std::vector<std::string>>{{"'b'"}, {"'c'"}}));
}

}  // namespace
}  // namespace qve
