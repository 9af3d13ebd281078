// Joins of every kind against a naive one, over keys that take each of the strategies.

#include "algebra/Join.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <thread>

#include "algebra/CartProd.h"
#include "algebra/ForcedGrouping.h"
#include "algebra/Lookup.h"
#include "algebra/PositionalJoin.h"
#include "algebra/SharedJoinGrouping.h"
#include "storage/Column.h"
#include "system/Operator.h"
#include "system/unicode.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

using Texts = std::vector<std::string>;

constexpr unsigned seed = 20260823;
constexpr unsigned outerRows = 3000;

Texts Numbers(unsigned rows) {
    Texts numbers;
    for (unsigned i = 0; i < rows; ++i) numbers.push_back(std::to_string(i));
    return numbers;
}

// `rows` multiples of `step` below `distinct` times that, a tenth of them null.
Texts RandomKeys(unsigned rows, unsigned distinct, long long step, std::mt19937& random) {
    Texts keys;
    for (unsigned i = 0; i < rows; ++i) {
        const unsigned value = random() % (distinct + distinct / 10);
        keys.push_back(value >= distinct ? "NULL" : std::to_string((static_cast<long long>(value) - 20) * step));
    }
    return keys;
}

// One key: the types on both sides, and the values.
struct KeyCase {
    std::string name;
    std::wstring outerType;
    std::wstring innerType;
    Texts outer;
    Texts inner;
    std::wstring strategy;
};

void PrintTo(const KeyCase& key, std::ostream* out) {
    *out << key.name;
}

std::vector<KeyCase> KeyCases() {
    std::mt19937 random(seed);
    Texts ascending;  // beyond the range from which ranks are kept
    for (int i = 0; i < 2500; ++i) ascending.push_back(std::to_string(i * 37 - 400));
    Texts reversed(ascending.rbegin(), ascending.rend());
    const auto keys = [&random](unsigned rows, unsigned distinct, long long step) {
        return RandomKeys(rows, distinct, step, random);
    };
    return {
        {"ranks", L"bigint", L"bigint", keys(outerRows, 3000, 37), ascending, L"ArrayGrouping"},
        {"ranks_narrow", L"long", L"long", keys(outerRows, 3000, 37), ascending, L"ArrayGrouping"},
        {"backwards", L"long", L"long", keys(outerRows, 3000, 37), reversed, L"ArrayGrouping"},
        {"duplicates", L"bigint", L"bigint", keys(outerRows, 400, 1), keys(500, 300, 1), L"ArrayGrouping"},
        {"two_widths", L"long", L"bigint", keys(outerRows, 400, 1), keys(500, 300, 1), L"ArrayGrouping"},
        {"dense", L"long", L"long", keys(outerRows, 3000, 1), Numbers(2500), L"FetchGrouping"},
        {"dense_wide", L"bigint", L"bigint", keys(outerRows, 3000, 1), Numbers(2500), L"FetchGrouping"},
        {"apart", L"long", L"long", keys(outerRows, 900, 2000003), keys(700, 800, 2000003), L"PerfectHashGrouping"},
        {"wide", L"bigint", L"bigint", keys(outerRows, 900, 10000000000), keys(700, 800, 10000000000), L"HashGrouping"},
        {"short", L"short", L"short", keys(outerRows, 400, 1), keys(300, 300, 1), L"RadixGrouping"},
        {"text", L"text", L"text", keys(outerRows, 400, 1), keys(300, 300, 1), L"HashGrouping"},
        {"double", L"double", L"double", keys(outerRows, 400, 1), keys(300, 300, 1), L"HashGrouping"},
        {"one_outer_matches_all", L"bigint", L"bigint", {"5", "7"}, Texts(2500, "5"), L"ArrayGrouping"},
        {"empty_inner", L"bigint", L"bigint", keys(50, 40, 1), {}, L"FetchGrouping"},
        {"empty_outer", L"text", L"text", {}, keys(50, 40, 1), L"HashGrouping"},
    };
}

using Pairs = std::vector<Texts>;

Pairs NaiveJoin(const KeyCase& key, const std::vector<uint64_t>& outer, Join::JoinType type, bool nullsMatch,
                bool firstOnly) {
    Pairs pairs;
    std::vector<bool> matched(key.inner.size());
    for (const uint64_t row : outer) {
        bool found = false;
        for (size_t i = 0; i < key.inner.size() && !(found && firstOnly); ++i) {
            const bool equal = key.outer[row] == key.inner[i] && (nullsMatch || key.inner[i] != "NULL");
            if (!equal) continue;
            found = matched[i] = true;
            pairs.push_back({std::to_string(row), std::to_string(i)});
        }
        if (!found && (type == Join::LeftJoin || type == Join::FullJoin)) {
            pairs.push_back({std::to_string(row), "NULL"});
        }
    }
    for (size_t i = 0; i < matched.size() && (type == Join::RightJoin || type == Join::FullJoin); ++i) {
        if (!matched[i]) pairs.push_back({"NULL", std::to_string(i)});
    }
    std::sort(pairs.begin(), pairs.end());
    return pairs;
}

// Says of a column in ascending order what a stored one would say of itself.
void Describe(Column& key, const Texts& keys) {
    const auto number = [](const std::string& text) { return text == "NULL" ? LLONG_MIN : std::stoll(text); };
    const auto falls = [&](const auto& a, const auto& b) { return number(a) > number(b); };
    const auto isNumber = key.GetDataType() == DataType::integer;
    if (!isNumber || std::adjacent_find(keys.begin(), keys.end(), falls) != keys.end()) return;
    key.SetProperty(usrpropkey::ordered, L"asc");
    if (std::adjacent_find(keys.begin(), keys.end()) == keys.end()) key.SetProperty(usrpropkey::unique, L"true");
}

RefCntPtr<LeafTable> Side(const std::wstring& type, const Texts& keys) {
    const RefCntPtr<Column> key = ColumnOf(type, L"k", keys);
    Describe(*key, keys);
    return TableOf({key, ColumnOf(L"long", L"id", Numbers(static_cast<unsigned>(keys.size())))});
}

RefCntPtr<Join> MakeJoin(RefCntPtr<DataFlow> outer, RefCntPtr<Table> inner, Join::JoinType type, bool nullsMatch) {
    return MakeRef<Join>(std::move(outer), std::move(inner), Join::NamePairs{{L"k", L"k"}},
                         Join::NamePairs{{L"id", L"partner"}}, type, nullsMatch);
}

// While it lives, the strategy comes first.
class Forced {
public:
    explicit Forced(GroupingIdType strategy) { ForcedGrouping::Set(Grouping::GetName(strategy)); }
    ~Forced() { ForcedGrouping::Set(L""); }
};

constexpr Join::JoinType joinTypes[] = {Join::InnerJoin, Join::LeftJoin, Join::RightJoin, Join::FullJoin};

class JoinTest : public testing::TestWithParam<KeyCase> {};

TEST_P(JoinTest, GivesTheRowsOfANaiveOne) {
    const KeyCase& key = GetParam();
    for (const auto type : joinTypes) {
        for (const bool nullsMatch : {false, true}) {
            for (const double share : {1.0, 0.4}) {
                for (const unsigned pageSize : {7u, 1024u}) {
                    SCOPED_TRACE(testing::Message() << "type " << type << " nulls " << nullsMatch << " share " << share
                                                    << " page " << pageSize);
                    const auto outer = MakeRef<SampleSelect>(Side(key.outerType, key.outer), share, seed);
                    const auto inner = Side(key.innerType, key.inner);
                    const auto join = MakeJoin(outer, inner, type, nullsMatch);
                    Pairs rows = Drain(*join, {L"id", L"partner"}, pageSize);
                    std::sort(rows.begin(), rows.end());
                    ASSERT_EQ(rows, NaiveJoin(key, outer->GetSelected(), type, nullsMatch, false));
                    EXPECT_EQ(join->GetGrouping()->GetName(), key.strategy);
                }
            }
        }
    }
}

TEST_P(JoinTest, ALookupTakesTheFirst) {
    const KeyCase& key = GetParam();
    const auto outer = MakeRef<SampleSelect>(Side(key.outerType, key.outer), 0.7, seed);
    const auto lookup = MakeRef<Lookup>(outer, Side(key.innerType, key.inner), Join::NamePairs{{L"k", L"k"}},
                                        Join::NamePairs{{L"id", L"partner"}}, Join::InnerJoin, true);
    Pairs rows = Drain(*lookup, {L"id", L"partner"}, 100);
    std::sort(rows.begin(), rows.end());
    EXPECT_EQ(rows, NaiveJoin(key, outer->GetSelected(), Join::InnerJoin, true, true));
}

TEST_P(JoinTest, EveryStrategyGivesTheSameRows) {
    KeyCase key = GetParam();
    for (const bool sorted : {false, true}) {
        if (sorted) {
            if (key.outerType == L"text" || key.outerType == L"double") continue;
            const auto number = [](const std::string& text) { return text == "NULL" ? LLONG_MIN : std::stoll(text); };
            const auto less = [&](const auto& a, const auto& b) { return number(a) < number(b); };
            std::sort(key.outer.begin(), key.outer.end(), less);
            std::sort(key.inner.begin(), key.inner.end(), less);
        }
        for (const auto strategy :
             {GroupingIdType::fetch, GroupingIdType::merge, GroupingIdType::array, GroupingIdType::perfectHash,
              GroupingIdType::perfectConcurrentHash, GroupingIdType::hash, GroupingIdType::concurrentHash}) {
            const Forced forced(strategy);
            for (const auto type : joinTypes) {
                for (const bool nullsMatch : {false, true}) {
                    const auto outer = MakeRef<SampleSelect>(Side(key.outerType, key.outer), 0.4, seed);
                    const auto join = MakeJoin(outer, Side(key.innerType, key.inner), type, nullsMatch);
                    Pairs rows = Drain(*join, {L"id", L"partner"}, 300);
                    std::sort(rows.begin(), rows.end());
                    ASSERT_EQ(rows, NaiveJoin(key, outer->GetSelected(), type, nullsMatch, false))
                        << "type " << type << " nulls " << nullsMatch << " sorted " << sorted << " forced "
                        << narrow(Grouping::GetName(strategy)) << " took " << narrow(join->GetGrouping()->GetName());
                    const bool always = strategy == GroupingIdType::hash || strategy == GroupingIdType::concurrentHash;
                    const bool merges = strategy == GroupingIdType::merge && sorted && key.outerType == key.innerType;
                    if (always || merges) {
                        EXPECT_EQ(join->GetGrouping()->NameId(), strategy);
                    }
                }
            }
        }
    }
}

TEST_P(JoinTest, JoinsInThreadsShareTheInnerTable) {
    const KeyCase& key = GetParam();
    constexpr unsigned workers = 3;
    for (const auto type : joinTypes) {
        const auto inner = Side(key.innerType, key.inner);
        std::vector<RefCntPtr<SampleSelect>> outers;
        std::vector<RefCntPtr<Join>> joins;
        RefCntPtr<SharedJoinGrouping> first;
        for (unsigned i = 0; i < workers; ++i) {
            outers.push_back(MakeRef<SampleSelect>(Side(key.outerType, key.outer), 0.5, seed + i));
            joins.push_back(MakeJoin(outers.back(), inner, type, false));
            const auto shared =
                first ? MakeRef<SharedJoinGrouping>(joins.back().get(), *first, CompareSemantics::nullsDiffer)
                      : MakeRef<SharedJoinGrouping>(joins.back().get(), CompareSemantics::nullsDiffer);
            if (!first) first = shared;
            joins.back()->SetGrouping(shared);
            joins.back()->GetColumn(L"id");
            joins.back()->GetColumn(L"partner");
        }
        first->SetWorkerCount(workers);
        std::vector<Pairs> results(workers);
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < workers; ++i) {
            threads.emplace_back([&, i] { results[i] = Drain(*joins[i], {L"id", L"partner"}, 100); });
        }
        for (std::thread& thread : threads) thread.join();

        // The inner rows that no outer one has matched come once.
        std::vector<uint64_t> selected;
        Pairs rows;
        for (unsigned i = 0; i < workers; ++i) {
            selected.insert(selected.end(), outers[i]->GetSelected().begin(), outers[i]->GetSelected().end());
            rows.insert(rows.end(), results[i].begin(), results[i].end());
            EXPECT_EQ(joins[i]->GetGrouping()->GetName(), key.strategy);
        }
        std::sort(rows.begin(), rows.end());
        EXPECT_EQ(rows, NaiveJoin(key, selected, type, false, false)) << "type " << type;
    }
}

INSTANTIATE_TEST_SUITE_P(Keys, JoinTest, testing::ValuesIn(KeyCases()),
                         [](const auto& test) { return test.param.name; });

TEST(Join, RowsComeInTheOrderOfTheInnerOnes) {
    const auto join =
        MakeRef<Join>(MakeRef<Scan>(Side(L"long", {"1", "2"})), Side(L"long", {"2", "1", "2", "1", "2"}),
                      Join::NamePairs{{L"k", L"k"}}, Join::NamePairs{{L"id", L"partner"}}, Join::InnerJoin, false);
    const Pairs expected = {{"0", "1"}, {"1", "0"}, {"0", "3"}, {"1", "2"}, {"1", "4"}};
    EXPECT_EQ(Drain(*join, {L"id", L"partner"}), expected);
}

TEST(Join, RefusesAGroupingOfOtherNullsAndAnUnknownStrategy) {
    const auto join = MakeJoin(MakeRef<Scan>(Side(L"long", {"1"})), Side(L"long", {"1"}), Join::InnerJoin, false);
    EXPECT_EQ(StatusOf([&] { join->SetGrouping(MakeRef<Grouping>(CompareSemantics::nullsMatch)); }), 40229);
    EXPECT_EQ(StatusOf([] { ForcedGrouping::Set(L"GuessGrouping"); }), 40218);
    EXPECT_EQ(ForcedGrouping::GetName(), L"");
}

TEST(Join, WhatAColumnSaysOfItselfIsNotBelieved) {
    for (const auto strategy : {GroupingIdType::fetch, GroupingIdType::merge}) {
        const Forced forced(strategy);
        const Texts keys = {"1", "2", "4", "3"};
        const auto side = [&keys] {
            const RefCntPtr<LeafTable> table = Side(L"long", keys);
            const RefCntPtr<Column> key = table->GetColumn(L"k");
            key->SetProperty(usrpropkey::ordered, L"asc");
            key->SetProperty(usrpropkey::unique, L"true");
            return table;
        };
        const auto join = MakeJoin(MakeRef<Scan>(side()), side(), Join::InnerJoin, false);
        const Pairs expected = {{"0", "0"}, {"1", "1"}, {"2", "2"}, {"3", "3"}};
        EXPECT_EQ(Drain(*join, {L"id", L"partner"}), expected);
        EXPECT_NE(join->GetGrouping()->NameId(), strategy);
    }
}

TEST(Join, ACancelEndsTheBuildAndTheRun) {
    for (const bool whileRunning : {false, true}) {
        const auto join =
            MakeRef<Join>(MakeRef<Scan>(Side(L"long", Numbers(100))), Side(L"long", Numbers(100)), Join::NamePairs{},
                          Join::NamePairs{{L"id", L"partner"}}, Join::InnerJoin, false);
        if (whileRunning) {
            ASSERT_GT(join->Next(10), 0u);
        }
        join->GetProgressCallback()->SetCancelled();
        EXPECT_THROW(join->Next(10), Operator::CancelledException);
    }
}

TEST(CartProd, PairsTheSelectedRowsWithAllRows) {
    for (const unsigned innerRows : {0u, 1u, 3u, 700u}) {
        for (const unsigned pageSize : {7u, 1024u}) {
            const auto outer = MakeRef<SampleSelect>(Side(L"long", Numbers(50)), 0.5, seed);
            const auto product = MakeRef<CartProd>(outer, Side(L"long", Numbers(innerRows)),
                                                   Join::NamePairs{{L"id", L"partner"}, {L"k", L"k"}});
            const Pairs rows = Drain(*product, {L"id", L"partner"}, pageSize);
            Pairs expected;
            for (const uint64_t row : outer->GetSelected()) {
                for (unsigned i = 0; i < innerRows; ++i) expected.push_back({std::to_string(row), std::to_string(i)});
            }
            EXPECT_EQ(rows, innerRows == 0 ? Pairs() : expected) << innerRows << " by " << pageSize;
        }
    }
}

TEST(CartProd, EndsWhenCancelled) {
    const auto product =
        MakeRef<CartProd>(MakeRef<Scan>(Side(L"long", Numbers(10))), Side(L"long", Numbers(10)), Join::NamePairs{});
    ASSERT_EQ(product->Next(3), 3u);
    product->GetProgressCallback()->SetCancelled();
    EXPECT_THROW(product->Next(3), Operator::CancelledException);
}

TEST(PositionalJoin, PutsTablesSideBySide) {
    const auto numbers =
        TableOf({ColumnOf(L"long", L"n", {"1", "2", "3"}), ColumnOf(L"long", L"both", {"1", "1", "1"})});
    const auto texts = TableOf({ColumnOf(L"text", L"s", {"a", "b", "c"}), ColumnOf(L"long", L"both", {"2", "2", "2"})});
    const auto joined = MakeRef<PositionalJoin>(numbers, texts);
    EXPECT_EQ(joined->GetColumnCount(), 3u);
    EXPECT_EQ(joined->Build(10), 3u);
    const Pairs expected = {{"1", "'a'", "1"}, {"2", "'b'", "1"}, {"3", "'c'", "1"}};
    EXPECT_EQ(Rows(*joined, {L"n", L"s", L"both"}), expected);
    EXPECT_EQ(Rows(*MakeRef<PositionalJoin>(nullptr, numbers), {L"n"}).size(), 3u);

    EXPECT_EQ(StatusOf([&] { MakeRef<PositionalJoin>(nullptr, nullptr); }), 40309);
    EXPECT_EQ(StatusOf([&] { joined->GetColumn(L"none"); }), 40311);
    const auto shorter = TableOf({ColumnOf(L"long", L"m", {"1"})});
    EXPECT_EQ(StatusOf([&] { MakeRef<PositionalJoin>(numbers, shorter)->Build(10); }), 40310);
}

TEST(Join, RefusesKeysThatDoNotCompare) {
    const auto join = MakeRef<Join>(MakeRef<Scan>(Side(L"long", {"1"})), Side(L"text", {"1"}),
                                    Join::NamePairs{{L"k", L"k"}}, Join::NamePairs{}, Join::InnerJoin, false);
    EXPECT_EQ(StatusOf([&] { join->Next(10); }), 40225);
}

}  // namespace
}  // namespace qve
