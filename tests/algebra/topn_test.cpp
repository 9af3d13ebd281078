#include "algebra/TopN.h"

#include "algebra/status.h"
#include "system/QuillonException.h"
#include "tests/algebra/sample_rows.h"
#include "tests/algebra/sort_model.h"

namespace qve {
namespace {

using Texts = std::vector<std::string>;
using TextRows = std::vector<Texts>;
using Specs = std::vector<Namespace::SortSpec>;

constexpr unsigned seed = 20260713;

// The keys of the result are those of a full sort, and each row is a whole row of the source.
void CheckTop(const std::vector<std::wstring>& types, const Specs& specs, const SampleOptions& options, unsigned rows,
              uint64_t limit, unsigned pageSize, double share, std::mt19937& random) {
    std::vector<RefCntPtr<Column>> columns;
    std::vector<std::wstring> names;
    for (const std::wstring& type : types) {
        names.push_back(L"k" + std::to_wstring(names.size()));
        columns.push_back(SampleColumn(type, names.back(), rows, options, random));
    }
    Texts numbers;
    for (unsigned row = 0; row < rows; ++row) numbers.push_back(std::to_string(row));
    columns.push_back(ColumnOf(L"bigint", L"row", numbers));
    names.push_back(L"row");
    const auto table = TableOf(columns);
    table->Build(1);
    const TextRows before = Rows(*table, names);

    const auto source = MakeRef<SampleSelect>(table, share, seed);
    const auto top = MakeRef<TopN>(source, specs, limit);
    top->Build(pageSize);
    const TextRows after = Rows(*top, names);
    TextRows expected;
    for (const uint64_t row : source->GetSelected()) expected.push_back(before[row]);
    std::stable_sort(expected.begin(), expected.end(),
                     [&](const Texts& a, const Texts& b) { return CompareRows(a, b, specs) < 0; });
    ASSERT_EQ(after.size(), std::min<uint64_t>(expected.size(), limit));
    std::vector<bool> seen(before.size());
    for (size_t i = 0; i < after.size(); ++i) {
        ASSERT_EQ(CompareRows(after[i], expected[i], specs), 0) << "place " << i;
        const size_t row = std::stoull(after[i].back());
        ASSERT_EQ(after[i], before[row]);
        ASSERT_FALSE(seen[row]);
        seen[row] = true;
    }
}

TEST(TopN, EveryTypeGivesTheBestRowsBothWays) {
    std::mt19937 random(seed);
    for (const std::wstring& type : SampleTypes()) {
        for (const bool descending : {false, true}) {
            for (const unsigned distinct : {3u, 100000u}) {
                for (const uint64_t limit : {1u, 10u, 700u}) {
                    SCOPED_TRACE("seed " + std::to_string(seed) + " " + std::string(type.begin(), type.end()) + " of " +
                                 std::to_string(distinct) + " limit " + std::to_string(limit) +
                                 (descending ? " desc" : " asc"));
                    SampleOptions options;
                    options.distinct = distinct;
                    options.nulls = 0.1;
                    options.nan = true;
                    options.spread = 3;
                    CheckTop({type}, {{L"k0", descending}}, options, 2000, limit, 300, limit == 10 ? 0.5 : 1, random);
                }
            }
        }
    }
}

// Enough rows for the set of candidates to overflow, so that the cut-off takes all keys into account.
TEST(TopN, SeveralKeysAndManyTiesOverflowTheCandidates) {
    std::mt19937 random(seed);
    const std::vector<std::vector<std::wstring>> keys = {{L"bit", L"long"}, {L"text", L"double"}, {L"tiny", L"text"}};
    for (const std::vector<std::wstring>& types : keys) {
        for (unsigned senses = 0; senses < 4; ++senses) {
            SCOPED_TRACE("seed " + std::to_string(seed) + " " + std::string(types[0].begin(), types[0].end()) +
                         " senses " + std::to_string(senses));
            SampleOptions options;
            options.distinct = 500;
            options.nulls = 0.01;
            CheckTop(types, {{L"k0", (senses & 1) != 0}, {L"k1", (senses & 2) != 0}}, options, 30000, 5, 1024, 1,
                     random);
        }
    }
}

TEST(TopN, SortedInputsInBothDirections) {
    Texts numbers;
    for (int i = 0; i < 40000; ++i) numbers.push_back(std::to_string(i));
    const auto table = TableOf({ColumnOf(L"long", L"k", numbers)});
    for (const bool descending : {false, true}) {
        const auto top = MakeRef<TopN>(MakeRef<Scan>(table), Specs{{L"k", descending}}, 3);
        top->Build(1024);
        EXPECT_EQ(Cells(*top->GetColumn(L"k")), (descending ? Texts{"39999", "39998", "39997"} : Texts{"0", "1", "2"}));
    }
}

TEST(TopN, LimitsOfZeroOneAndMoreThanThereIs) {
    const auto table =
        TableOf({ColumnOf(L"long", L"k", {"2", "NULL", "3", "1"}), ColumnOf(L"text", L"t", {"b", "n", "c", "a"})});
    const auto top = [&](uint64_t limit, bool descending) {
        const auto result = MakeRef<TopN>(MakeRef<Scan>(table), Specs{{L"k", descending}}, limit);
        EXPECT_EQ(result->Build(3), std::min<uint64_t>(limit, 4));
        EXPECT_EQ(result->Build(3), result->GetCount());
        return Rows(*result, {L"k", L"t"});
    };
    EXPECT_EQ(top(0, false), TextRows{});
    EXPECT_EQ(top(1, false), (TextRows{{"NULL", "'n'"}}));
    EXPECT_EQ(top(1, true), (TextRows{{"3", "'c'"}}));
    EXPECT_EQ(top(~uint64_t{0}, true), (TextRows{{"3", "'c'"}, {"2", "'b'"}, {"1", "'a'"}, {"NULL", "'n'"}}));
}

TEST(TopN, WithoutKeysItTakesTheFirstRowsAndReadsNoMore) {
    Texts numbers;
    for (int i = 0; i < 1000; ++i) numbers.push_back(std::to_string(i));
    const auto table = TableOf({ColumnOf(L"long", L"k", numbers)});
    const auto scan = MakeRef<Scan>(table);
    const auto top = MakeRef<TopN>(scan, Specs{}, 25);
    EXPECT_EQ(top->Build(10), 25u);
    EXPECT_EQ(scan->GetCursor(), 30u);
    EXPECT_EQ(Cells(*top->GetColumn(L"k")), Texts(numbers.begin(), numbers.begin() + 25));
}

TEST(TopN, AnEmptyFlowGivesEmptyColumns) {
    const auto table = TableOf({ColumnOf(L"long", L"k", {}), ColumnOf(L"text", L"t", {})});
    const auto top = MakeRef<TopN>(MakeRef<Scan>(table), Specs{{L"t", false}}, 10);
    EXPECT_EQ(top->Build(10), 0u);
    EXPECT_EQ(top->GetColumn(L"t")->GetCount(), 0u);
    EXPECT_EQ(StatusOf([&] { top->GetColumn(L"x"); }), status::TopN_GetColumn);
    EXPECT_EQ(StatusOf([&] { top->DescribeColumn(L"x"); }), status::TopN_DescribeColumn);
}

TEST(TopN, ACancelEndsTheSort) {
    std::mt19937 random(seed);
    const auto table = TableOf({SampleColumn(L"double", L"k", 100, {}, random)});
    const auto top = MakeRef<TopN>(MakeRef<Scan>(table), Specs{{L"k", false}}, 10);
    top->GetProgressCallback()->SetCancelled();
    EXPECT_THROW(top->Build(10), Operator::CancelledException);
}

}  // namespace
}  // namespace qve
