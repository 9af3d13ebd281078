#include "algebra/ClusteringFlow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "algebra/ColumnExp.h"
#include "algebra/Scan.h"
#include "algebra/status.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

using Cells = std::vector<std::vector<std::string>>;

constexpr unsigned clusters = 5;

RefCntPtr<LeafTable> Sample(unsigned rows) {
    std::mt19937 random(11);
    std::vector<RefCntPtr<Column>> columns;
    for (const std::wstring& type : SampleTypes()) {
        columns.push_back(SampleColumn(type, type, rows, {.distinct = 200, .nulls = 0.1}, random));
    }
    return TableOf(columns);
}

unsigned ClusterOf(const std::string& number) {
    if (number == "NULL") return 0;
    const long long remainder = std::stoll(number) % clusters;
    return static_cast<unsigned>(remainder < 0 ? remainder + clusters : remainder);
}

size_t PlaceOf(const std::wstring& name) {
    const std::vector<std::wstring>& names = SampleTypes();
    return static_cast<size_t>(std::find(names.begin(), names.end(), name) - names.begin());
}

TEST(ClusteringFlowTest, APageHasRowsOfOneClusterInTheirOrder) {
    const std::vector<std::wstring>& names = SampleTypes();
    for (const std::wstring key : {L"long", L"bigint", L"tiny"}) {
        const size_t place = PlaceOf(key);
        for (const double share : {0.3, 1.0}) {
            SampleSelect plain(Sample(5000), share, 4);
            std::map<unsigned, Cells> expected;
            for (auto& row : Drain(plain, names)) expected[ClusterOf(row[place])].push_back(std::move(row));
            for (const unsigned long long limit : {1ull, 300ull, 1000000ull}) {
                for (const unsigned pageSize : {64u, 1024u}) {
                    ClusteringFlow flow(MakeRef<SampleSelect>(Sample(5000), share, 4), MakeRef<ColumnExp>(key),
                                        clusters, limit);
                    for (int round = 0; round < 2; ++round) {
                        std::map<unsigned, Cells> found;
                        Cells page;
                        while (!(page = NextRows(flow, names, pageSize)).empty()) {
                            EXPECT_LE(page.size(), pageSize);
                            for (auto& row : page) {
                                EXPECT_EQ(ClusterOf(row[place]), flow.GetCluster());
                                found[flow.GetCluster()].push_back(std::move(row));
                            }
                        }
                        EXPECT_EQ(found, expected);
                        flow.ResetCursor();
                    }
                }
            }
        }
    }
}

// A reader that asks for smaller pages than before gets the rest of a page piece by piece.
TEST(ClusteringFlowTest, PagesMayBeAskedForInAnySize) {
    const std::vector<std::wstring>& names = SampleTypes();
    const auto make = [] {
        return MakeRef<ClusteringFlow>(MakeRef<Scan>(Sample(4000)), MakeRef<ColumnExp>(L"long"), clusters, 500);
    };
    const auto sorted = [](Cells rows) {
        std::sort(rows.begin(), rows.end());
        return rows;
    };
    const auto flow = make();
    Cells rows;
    unsigned turn = 0;
    for (Cells page; !(page = NextRows(*flow, names, turn % 3 == 0 ? 1000 : 7)).empty(); ++turn) {
        rows.insert(rows.end(), page.begin(), page.end());
    }
    EXPECT_EQ(sorted(rows), sorted(Drain(*make(), names)));
}

TEST(ClusteringFlowTest, SaysWhatItIsMissing) {
    const auto number = MakeRef<ColumnExp>(L"long");
    const auto scan = [] { return MakeRef<Scan>(Sample(10)); };
    EXPECT_EQ(StatusOf([&] { ClusteringFlow(nullptr, number, 2, 1); }), status::ClusteringFlow_source);
    EXPECT_EQ(StatusOf([&] { ClusteringFlow(scan(), nullptr, 2, 1); }), status::ClusteringFlow_number);
    EXPECT_EQ(StatusOf([&] { ClusteringFlow(scan(), number, 0, 1); }), status::ClusteringFlow_number);
}

}  // namespace
}  // namespace qve
