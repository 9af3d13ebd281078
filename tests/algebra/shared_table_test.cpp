#include "algebra/SharedTable.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

#include "algebra/FlowTable.h"
#include "algebra/FractionTable.h"
#include "algebra/RangeTable.h"
#include "algebra/Scan.h"
#include "algebra/status.h"
#include "storage/EncodingFactory.h"
#include "system/QuillonException.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

using Cells = std::vector<std::vector<std::string>>;

// Rows that lie together by their values in k, some of them null; s has as many runs.
RefCntPtr<LeafTable> Clustered(const std::vector<unsigned>& runs) {
    std::vector<std::string> keys, texts, rows;
    for (size_t run = 0; run < runs.size(); ++run) {
        for (unsigned i = 0; i < runs[run]; ++i) {
            keys.push_back(run % 4 == 3 ? "NULL" : std::to_string(run % 3));
            texts.push_back("t" + std::to_string(run));
            rows.push_back(std::to_string(rows.size()));
        }
    }
    return TableOf({ColumnOf(L"long", L"k", keys), ColumnOf(L"text", L"s", texts), ColumnOf(L"long", L"n", rows)});
}

Cells All(const RefCntPtr<Table>& table, unsigned pageSize = 1024) {
    Scan scan(table);
    return Drain(scan, {L"k", L"s", L"n"}, pageSize);
}

// Counts how often a table is read from its beginning, and fails when asked to.
class CountedFlow : public DataFlow {
public:
    explicit CountedFlow(const RefCntPtr<Table>& table, bool fails = false)
        : DataFlow(MakeRef<Scan>(table), table->GetColumnNames()), m_fails(fails) {}
    void Accept(OperatorVisitor&) override {}
    unsigned Next(unsigned pageSize) override {
        if (GetCursor() == 0) ++starts;
        if (m_fails) throw QVE_RuntimeError(1, "broken off");
        return DataFlow::Next(pageSize);
    }
    std::atomic<unsigned> starts{0};

private:
    const bool m_fails;
};

TEST(SharedTableTest, ViewsOnThreadsShareOneBuild) {
    const auto leaf = Clustered(std::vector<unsigned>(40, 250));
    const Cells expected = All(leaf);
    for (const uint64_t encodings : {uint64_t{0}, FlowTable::anyEncoding}) {
        const auto flow = MakeRef<CountedFlow>(leaf);
        const auto first = MakeRef<SharedTable>(MakeRef<FlowTable>(flow, encodings));
        std::vector<RefCntPtr<SharedTable>> views{first};
        for (int i = 0; i < 3; ++i) views.push_back(MakeRef<SharedTable>(nullptr, first.get()));
        EXPECT_EQ(views.back()->GetFamilyGuid(), first->GetFamilyGuid());
        EXPECT_NE(SharedTable(leaf).GetFamilyGuid(), first->GetFamilyGuid());

        std::vector<Cells> seen(views.size());
        std::vector<std::thread> threads;
        for (size_t i = 0; i < views.size(); ++i) {
            threads.emplace_back([&, i] { seen[i] = All(views[i], 100 + 37 * static_cast<unsigned>(i)); });
        }
        for (std::thread& thread : threads) thread.join();
        for (const Cells& cells : seen) EXPECT_EQ(cells, expected);
        EXPECT_EQ(flow->starts, 1u);
        // A view that comes after the build, and one that is read beside another.
        const auto late = MakeRef<SharedTable>(nullptr, first.get());
        Scan slow(late), fast(first);
        slow.GetColumn(L"n");
        slow.Next(3);
        fast.Next(1000);
        EXPECT_EQ(All(late), expected);
        EXPECT_EQ(flow->starts, 1u);
    }
}

// A table whose build was broken off is not taken for a whole one by those that come later.
TEST(SharedTableTest, EveryViewSeesTheFaultOfTheBuild) {
    const auto flow = MakeRef<CountedFlow>(Clustered({10}), true);
    const auto first = MakeRef<SharedTable>(MakeRef<FlowTable>(flow));
    const auto second = MakeRef<SharedTable>(nullptr, first.get());
    EXPECT_THROW(first->Build(10), QVE_RuntimeError);
    EXPECT_THROW(second->Build(10), QVE_RuntimeError);
    EXPECT_EQ(flow->starts, 1u);
}

TEST(SharedTableTest, RefusesUnknownColumnsAndNoSource) {
    EXPECT_EQ(StatusOf([] { SharedTable(nullptr); }), status::SharedTable_source);
    const SharedTable shared(Clustered({3}));
    EXPECT_EQ(StatusOf([&] { shared.GetColumn(L"x"); }), status::SharedTable_GetColumn);
    EXPECT_EQ(StatusOf([&] { shared.DescribeColumn(L"x"); }), status::SharedTable_DescribeColumn);
}

// All shares are the table, each row once, and none begins amid equal keys.
TEST(FractionTableTest, SharesAreTheRowsOnceAndCutBetweenClusters) {
    std::mt19937 random(5);
    std::vector<unsigned> manyRuns;
    for (int run = 0; run < 60; ++run) manyRuns.push_back(1 + static_cast<unsigned>(random() % 120));
    const std::vector<std::vector<unsigned>> shapes{{}, {1}, {3000}, {1, 5000, 1}, {10, 10, 10, 10}, manyRuns};
    for (const auto& runs : shapes) {
        const Cells expected = All(Clustered(runs));
        for (const unsigned shares : {1u, 2u, 3u, 7u}) {
            for (const auto& clusters : std::vector<std::vector<std::wstring>>{{}, {L"k"}, {L"k", L"s"}}) {
                for (const bool encoded : {false, true}) {
                    Cells rows;
                    for (unsigned index = 0; index < shares; ++index) {
                        RefCntPtr<Table> table = Clustered(runs);
                        if (encoded) table = MakeRef<FlowTable>(MakeRef<Scan>(table));
                        const Cells share = All(MakeRef<FractionTable>(table, index, shares, clusters), 100);
                        if (!clusters.empty() && !rows.empty() && !share.empty()) {
                            EXPECT_NE(rows.back()[1], share.front()[1]);
                        }
                        rows.insert(rows.end(), share.begin(), share.end());
                        if (clusters.empty()) {
                            EXPECT_LE(share.size(), expected.size() / shares + 1);
                        }
                    }
                    EXPECT_EQ(rows, expected) << shares << " shares, " << clusters.size() << " clusters";
                }
            }
        }
    }
    EXPECT_EQ(StatusOf([] { FractionTable(Clustered({3}), 2, 2); }), status::FractionTable_fraction);
}

TEST(RangeTableTest, EndsWhereItsTableEnds) {
    const auto table = Clustered({4, 4});
    const Cells expected = All(table);
    const auto range = [&](uint64_t first, uint64_t count) { return All(MakeRef<RangeTable>(table, first, count), 3); };
    EXPECT_EQ(range(0, ~uint64_t{0}), expected);
    EXPECT_EQ(range(3, 4), Cells(expected.begin() + 3, expected.begin() + 7));
    EXPECT_EQ(range(6, 5), Cells(expected.begin() + 6, expected.end()));
    EXPECT_TRUE(range(8, 1).empty());
    EXPECT_TRUE(range(90, 1).empty());
    // A part of a part.
    EXPECT_EQ(All(MakeRef<FractionTable>(MakeRef<RangeTable>(table, 2, 4), 1, 2)),
              Cells(expected.begin() + 4, expected.begin() + 6));
}

}  // namespace
}  // namespace qve
