#include "algebra/Compact.h"

#include <gtest/gtest.h>

#include "algebra/ConstantExp.h"
#include "algebra/Project.h"
#include "algebra/Scan.h"
#include "algebra/status.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

using Cells = std::vector<std::vector<std::string>>;

RefCntPtr<LeafTable> Sample(unsigned rows) {
    std::mt19937 random(3);
    std::vector<RefCntPtr<Column>> columns;
    for (const std::wstring& type : SampleTypes()) {
        columns.push_back(SampleColumn(type, type, rows, {.distinct = 20, .nulls = 0.2}, random));
    }
    return TableOf(columns);
}

TEST(CompactTest, PagesAreFullAndHoldTheSelectedRowsInOrder) {
    const std::vector<std::wstring>& names = SampleTypes();
    for (const double share : {0.0, 0.01, 0.3, 0.9, 1.0}) {
        for (const unsigned pageSize : {1u, 7u, 1024u}) {
            SampleSelect sparse(Sample(2500), share, 8);
            const Cells expected = Drain(sparse, names, pageSize);
            Compact compact(MakeRef<SampleSelect>(Sample(2500), share, 8));
            for (int round = 0; round < 2; ++round) {
                Cells rows;
                size_t pages = 0;
                while (const unsigned extent = compact.Next(pageSize)) {
                    EXPECT_EQ(compact.GetSelection(), nullptr);
                    EXPECT_EQ(compact.GetSelectionCount(), extent);
                    EXPECT_LE(extent, pageSize);
                    ++pages;
                }
                EXPECT_EQ(compact.Next(pageSize), 0u);
                EXPECT_EQ(pages, (expected.size() + pageSize - 1) / pageSize);
                compact.ResetCursor();
            }
            EXPECT_EQ(Drain(compact, names, pageSize), expected);
        }
    }
}

// A column with one value for all rows has it in every row of a page.
TEST(CompactTest, SpreadsConstants) {
    const auto constant = Literal(L"long", "7");
    constant->SetName(L"c");
    Compact compact(
        MakeRef<Project>(MakeRef<SampleSelect>(Sample(3000), 0.5, 1), std::vector<RefCntPtr<Exp>>{constant}));
    const Cells rows = Drain(compact, {L"c"}, 1000);
    EXPECT_GT(rows.size(), 1000u);
    for (const auto& row : rows) EXPECT_EQ(row[0], "7");
}

TEST(CompactTest, RefusesNoSource) {
    EXPECT_EQ(StatusOf([] { Compact(nullptr); }), status::Compact_source);
}

}  // namespace
}  // namespace qve
