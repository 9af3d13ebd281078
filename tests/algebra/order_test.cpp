#include "algebra/Order.h"

#include "algebra/TableSorter.h"
#include "algebra/radix_sort.h"
#include "algebra/status.h"
#include "system/QuillonException.h"
#include "tests/algebra/sample_rows.h"
#include "tests/algebra/sort_model.h"

namespace qve {
namespace {

using Texts = std::vector<std::string>;
using TextRows = std::vector<Texts>;
using Specs = std::vector<Namespace::SortSpec>;

constexpr unsigned seed = 20260712;

std::vector<std::wstring> NamesOf(const Specs& specs) {
    std::vector<std::wstring> names;
    for (const Namespace::SortSpec& spec : specs) names.push_back(spec.name);
    return names;
}

// Sorted rows are in order, and they are the rows that there were, each with the row number it carries along.
void CheckOrdered(const Table& source, const Table& ordered, const Specs& specs, uint64_t limit = Order::noLimit) {
    std::vector<std::wstring> names = NamesOf(specs);
    names.push_back(L"row");
    const TextRows before = Rows(source, names);
    const TextRows after = Rows(ordered, names);
    ASSERT_EQ(after.size(), std::min<uint64_t>(before.size(), limit));
    std::vector<bool> seen(before.size());
    for (size_t i = 0; i < after.size(); ++i) {
        const size_t row = std::stoull(after[i].back());
        ASSERT_EQ(after[i], before[row]) << "place " << i;
        ASSERT_FALSE(seen[row]) << "row " << row << " twice";
        seen[row] = true;
        if (i > 0) {
            ASSERT_LE(CompareRows(after[i - 1], after[i], specs), 0) << "place " << i;
        }
    }
    // What the limit cut off is no better than what was kept.
    for (size_t row = 0; row < before.size(); ++row) {
        if (!seen[row]) {
            ASSERT_GE(CompareRows(before[row], after.back(), specs), 0) << "row " << row;
        }
    }
}

RefCntPtr<LeafTable> SampleTable(const std::vector<std::wstring>& types, unsigned rows, const SampleOptions& options,
                                 std::mt19937& random) {
    std::vector<RefCntPtr<Column>> columns;
    for (size_t k = 0; k < types.size(); ++k) {
        columns.push_back(SampleColumn(types[k], L"k" + std::to_wstring(k), rows, options, random));
    }
    Texts numbers;
    for (unsigned row = 0; row < rows; ++row) numbers.push_back(std::to_string(row));
    columns.push_back(ColumnOf(L"bigint", L"row", numbers));
    return TableOf(columns);
}

// A key that ascends with the rows is not sorted by where it comes last, or has no equal values; one of the other sense
// is.
TEST(Order, AKeyInTheOrderOfTheRowsCostsNothingAndChangesNothing) {
    std::mt19937 random(seed);
    for (const unsigned distinct : {3u, 400u}) {
        for (const bool unique : {false, true}) {
            const auto table = SampleTable({L"double", L"tiny"}, 5000, {.distinct = distinct, .nulls = 0.1}, random);
            const RefCntPtr<Column> row = table->GetColumn(L"row");
            row->SetProperty(usrpropkey::ordered, L"asc");
            row->SetProperty(usrpropkey::not_null, L"true");
            if (unique) row->SetProperty(usrpropkey::unique, L"true");
            table->Build(1);
            for (const bool descending : {false, true}) {
                for (const Specs& specs : {Specs{{L"k0", descending}, {L"row", false}},
                                           Specs{{L"k0", false}, {L"row", descending}, {L"k1", false}},
                                           Specs{{L"k1", true}, {L"k0", false}, {L"row", descending}}}) {
                    Order ordered(table, specs);
                    ordered.Build(1024);
                    CheckOrdered(*table, ordered, specs);
                }
            }
        }
    }
}

TEST(Order, EveryTypeSortsBothWays) {
    std::mt19937 random(seed);
    for (const std::wstring& type : SampleTypes()) {
        for (const unsigned distinct : {2u, 40u, 100000u}) {
            for (const bool descending : {false, true}) {
                SCOPED_TRACE("seed " + std::to_string(seed) + " " + std::string(type.begin(), type.end()) + " of " +
                             std::to_string(distinct) + (descending ? " desc" : " asc"));
                SampleOptions options;
                options.distinct = distinct;
                options.nulls = 0.1;
                options.nan = true;
                options.spread = 3;
                const auto table = SampleTable({type}, 1200, options, random);
                const Specs specs = {{L"k0", descending}};
                const auto order = MakeRef<Order>(table, specs);
                EXPECT_EQ(order->Build(7), 1200u);
                CheckOrdered(*table, *order, specs);
            }
        }
    }
}

TEST(Order, SeveralKeysSortByTheFirstThatDiffers) {
    std::mt19937 random(seed);
    const std::vector<std::vector<std::wstring>> keys = {
        {L"bit", L"tiny", L"double"},
        {L"text", L"bigint"},
        {L"double", L"text", L"date"},
        {L"date", L"long", L"oid"},
        {L"short", L"text", L"text"},
        {L"float", L"uchr", L"datetime"},
        {L"double", L"double", L"bigint", L"short"},
    };
    for (const std::vector<std::wstring>& types : keys) {
        for (unsigned senses = 0; senses < 8; ++senses) {
            SCOPED_TRACE("seed " + std::to_string(seed) + " " + std::string(types[0].begin(), types[0].end()) +
                         " senses " + std::to_string(senses));
            SampleOptions options;
            options.distinct = 6;
            options.nulls = 0.2;
            options.nan = true;
            options.spread = 1000000007;
            const auto table = SampleTable(types, 900, options, random);
            Specs specs;
            for (size_t k = 0; k < types.size(); ++k) {
                specs.push_back({L"k" + std::to_wstring(k), (senses >> k & 1) != 0});
            }
            const auto order = MakeRef<Order>(table, specs);
            order->Build(1024);
            CheckOrdered(*table, *order, specs);
        }
    }
}

TEST(Order, ALimitKeepsTheBestRows) {
    std::mt19937 random(seed);
    SampleOptions options;
    options.distinct = 50;
    options.nulls = 0.1;
    const auto table = SampleTable({L"long", L"text"}, 5000, options, random);
    const Specs specs = {{L"k0", true}, {L"k1", false}};
    for (const uint64_t limit : {1u, 49u, 2600u, 4999u, 5000u, 9000u}) {
        SCOPED_TRACE(limit);
        const auto order = MakeRef<Order>(table, specs, std::vector<std::wstring>{}, limit);
        order->Build(1024);
        CheckOrdered(*table, *order, specs, limit);
    }
}

TEST(Order, EmptyAndSingleRowsNeedNoSort) {
    for (const Texts& rows : {Texts{}, Texts{"5"}}) {
        const auto table = TableOf({ColumnOf(L"long", L"k", rows)});
        const auto order = MakeRef<Order>(table, Specs{{L"k", false}}, std::vector<std::wstring>{L"rank"});
        EXPECT_EQ(order->Build(10), rows.size());
        EXPECT_EQ(Cells(*order->GetColumn(L"k")), rows);
        EXPECT_EQ(order->GetColumn(L"rank")->GetCount(), rows.size());
    }
}

TEST(Order, RankColumnsNumberTheRows) {
    const auto table = TableOf({ColumnOf(L"long", L"k", {"3", "1", "2"})});
    const auto order = MakeRef<Order>(table, Specs{{L"k", true}}, std::vector<std::wstring>{L"rank"});
    order->Build(10);
    EXPECT_EQ(Rows(*order, {L"k", L"rank"}), (TextRows{{"3", "0"}, {"2", "1"}, {"1", "2"}}));
    const auto make = [&](std::vector<std::wstring> ranks) {
        return StatusOf([&] { MakeRef<Order>(table, Specs{{L"k", true}, {L"k", true}}, std::move(ranks)); });
    };
    EXPECT_EQ(make({L"k", L""}), status::TableSorter_RankHides);
    EXPECT_EQ(make({L"r", L"r"}), status::TableSorter_RankTwice);
    EXPECT_EQ(make({L"", L""}), 0);
}

TEST(Order, ColumnsAskedForBeforeAndAfterTheBuildAreTheSame) {
    std::mt19937 random(seed);
    const auto table = SampleTable({L"text"}, 300, {}, random);
    const Specs specs = {{L"k0", false}};
    const auto order = MakeRef<Order>(table, specs);
    const RefCntPtr<Column> before = order->GetColumn(L"k0");
    EXPECT_EQ(before->GetCount(), 0u);
    order->Build(7);
    EXPECT_EQ(order->GetColumn(L"k0"), before);
    CheckOrdered(*table, *order, specs);
    // The source is as it was.
    EXPECT_EQ(Cells(*table->GetColumn(L"row"))[17], "17");
}

TEST(Order, SaysOfItsColumnsHowTheyAreSorted) {
    const auto table = TableOf({ColumnOf(L"long", L"a", {"2", "1"}), ColumnOf(L"long", L"b", {"1", "2"})});
    table->GetColumn(L"b")->SetProperty(usrpropkey::ordered, L"asc");
    const Specs specs = {{L"a", true}};
    const auto order = MakeRef<Order>(table, specs);
    EXPECT_EQ(Namespace::BuildSortSpecs(*order), specs);
    EXPECT_EQ(order->DescribeColumn(L"a")->GetProperty(usrpropkey::ordered), L"desc");
    EXPECT_FALSE(order->DescribeColumn(L"b")->HasProperty(usrpropkey::ordered));
    EXPECT_EQ(StatusOf([&] { order->GetColumn(L"x"); }), status::Order_GetColumn);
    EXPECT_EQ(StatusOf([&] { order->DescribeColumn(L"x"); }), status::Order_DescribeColumn);
    EXPECT_EQ(StatusOf([&] { MakeRef<Order>(nullptr, specs); }), status::Order_source);
}

TEST(TableSorter, AKeyThatIsSortedByItsPropertiesCostsNothing) {
    const auto table = TableOf({ColumnOf(L"long", L"k", {"1", "2", "3"})});
    table->GetColumn(L"k")->SetProperty(usrpropkey::ordered, L"asc");
    table->GetColumn(L"k")->SetProperty(usrpropkey::not_null, L"true");
    table->Build(1);
    TableSorter sorted(table, {{L"k", false}});
    EXPECT_FALSE(sorted.Sort());
    TableSorter reversed(table, {{L"k", true}});
    EXPECT_TRUE(reversed.Sort());
    EXPECT_EQ(reversed.GetPermutation(), (dense_vector<unsigned>{2, 1, 0}));
    TableSorter unsorted(table, {});
    EXPECT_FALSE(unsorted.Sort());
    EXPECT_EQ(StatusOf([] { TableSorter(nullptr, {}); }), status::TableSorter_table);
}

TEST(TableSorter, ADenseUniqueKeyIsAPermutationAndIsNotTrustedBlindly) {
    for (const bool lie : {false, true}) {
        const auto table = TableOf({ColumnOf(L"long", L"k", {"7", "5", lie ? "5" : "8", "6"})});
        table->GetColumn(L"k")->SetProperty(usrpropkey::dense, L"5");
        table->GetColumn(L"k")->SetProperty(usrpropkey::unique, L"true");
        table->Build(1);
        for (const bool radix : {true, false}) {
            TableSorter::SetUseRadixSorting(radix);
            TableSorter sorter(table, {{L"k", false}});
            EXPECT_TRUE(sorter.Sort());
            const auto& rows = sorter.GetPermutation();
            ASSERT_EQ(rows.size(), 4u);
            EXPECT_EQ(rows[3], lie ? 0u : 2u);
            EXPECT_EQ(rows[2], lie ? 3u : 0u);
        }
        TableSorter::SetUseRadixSorting(true);
    }
}

TEST(TableSorter, ACancelEndsTheSort) {
    std::mt19937 random(seed);
    SampleOptions options;
    options.distinct = 1000;
    for (const wchar_t* type : {L"double", L"text"}) {
        const auto table = SampleTable({type}, 2000, options, random);
        const auto order = MakeRef<Order>(table, Specs{{L"k0", false}});
        order->GetProgressCallback()->SetCancelled();
        EXPECT_THROW(order->Build(1024), Operator::CancelledException);
    }
}

// All sizes for which there is a path of its own, with keys that have few values and many, in their lowest bits and in
// their highest ones, and with one value for most.
template <class Item, class Make, class Value>
void CheckRadixSort(unsigned keyBits, Make make, Value value) {
    std::mt19937_64 random(23);
    for (const size_t count : {0u, 1u, 300u, 5000u, 30'000u, 300'000u}) {
        for (const uint64_t spread : {uint64_t{1}, uint64_t{3}, uint64_t{3000}, uint64_t{1} << 20, uint64_t{1} << 32}) {
            for (const unsigned shift : {0u, 11u, keyBits - 32, keyBits - 2}) {
                std::vector<Item> items(count);
                for (size_t i = 0; i < count; ++i) {
                    const auto key = static_cast<unsigned __int128>(random() % spread) << shift;
                    items[i] = make(i % 8 ? 7 : key, i);
                }
                std::vector<Item> sorted = items;
                const auto less = [value](const Item& a, const Item& b) { return value(a) < value(b); };
                std::sort(sorted.begin(), sorted.end(), less);
                std::vector<Item> scratch(count);
                radix_sort(count, items.data(), scratch.data(), nullptr);
                const auto same = [value](const Item& a, const Item& b) { return value(a) == value(b); };
                EXPECT_TRUE(std::equal(items.begin(), items.end(), sorted.begin(), same))
                    << count << " rows, " << spread << " keys, shifted by " << shift;
            }
        }
    }
}

TEST(RadixSort, SortsByTheKeyAndKeepsTheOrderOfEqualOnes) {
    CheckRadixSort<uint64_t>(
        32, [](unsigned __int128 key, uint64_t row) { return static_cast<uint64_t>(key) << 32 | row; },
        [](uint64_t item) { return item; });
    CheckRadixSort<wide_item>(
        96,
        [](unsigned __int128 key, uint64_t row) {
            return wide_item{static_cast<uint64_t>(key >> 32), static_cast<uint64_t>(key) << 32 | row};
        },
        [](const wide_item& item) { return static_cast<unsigned __int128>(item.high) << 64 | item.low; });
}

TEST(RadixSelect, FindsWhatASortWouldPutThere) {
    std::mt19937_64 random(17);
    for (const uint64_t spread : {uint64_t{1}, uint64_t{5}, uint64_t{3000}, uint64_t{1} << 32}) {
        std::vector<uint64_t> items(5000);
        for (uint64_t& item : items) item = (random() % spread) << 32 | (random() & 0xFFFFFFFF);
        std::vector<uint64_t> sorted = items;
        std::sort(sorted.begin(), sorted.end());
        for (const uint64_t rank : {0, 1, 2499, 4998, 4999}) {
            EXPECT_EQ(radix_select(items.size(), items.data(), rank, nullptr), sorted[rank] >> 32) << rank;
        }
    }
}

}  // namespace
}  // namespace qve
