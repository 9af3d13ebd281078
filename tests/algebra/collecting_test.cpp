// Measures that keep the values of their groups, and aggregates over sorted flows.

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <map>
#include <set>
#include <sstream>

#include "algebra/Aggr.h"
#include "algebra/AggrExp.h"
#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/CountdExp.h"
#include "algebra/DistinctCells.h"
#include "algebra/MomentsExp.h"
#include "algebra/OrdAggr.h"
#include "algebra/Order.h"
#include "algebra/QuantileExp.h"
#include "algebra/select_rank.h"
#include "algebra/status.h"
#include "system/unicode.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

using Texts = std::vector<std::string>;
using TextRows = std::vector<Texts>;

template <class T, class... Arguments>
RefCntPtr<Exp> Named(const std::wstring& name, Arguments&&... arguments) {
    return MakeRef<T>(name, std::forward<Arguments>(arguments)...);
}

RefCntPtr<Exp> Fraction(double q) {
    return MakeRef<ConstantExp>(usratom(q));
}

TEST(SelectRank, FindsNeighboursAsASortDoes) {
    std::mt19937 random(7);
    for (const size_t size : {1u, 2u, 3u, 100u, 5000u}) {
        std::vector<double> values;
        std::normal_distribution<double> spread(0, 1000);
        for (size_t i = 0; i < size; ++i) values.push_back(i % 3 ? spread(random) : std::floor(spread(random) / 500));
        std::vector<double> sorted = values;
        std::sort(sorted.begin(), sorted.end());
        const size_t cut = size / 3;
        const std::vector<std::span<const double>> pieces{std::span(values).first(cut), std::span(values).subspan(cut)};
        for (size_t low = 0; low < size; low += std::max<size_t>(1, size / 50)) {
            const auto pair = select_pair<double>(pieces, low);
            EXPECT_EQ(pair.first, sorted[low]);
            EXPECT_EQ(pair.second, sorted[std::min(low + 1, size - 1)]);
        }
    }
    EXPECT_LT(rank_word(-2.0), rank_word(-1.0));
    EXPECT_LT(rank_word(-0.0), rank_word(1e-300));
    EXPECT_LT(rank_word(-5LL), rank_word(3LL));
}

// The same pairs by maps, by a table, and by maps that become too large on the way or whose range was wrong.
TEST(DistinctCells, CountEachPairOnce) {
    struct {
        uint64_t least;
        uint64_t range;
        unsigned groups;
    } const cases[] = {{0, 0, 5}, {100, 900, 5}, {100, 900, 1}, {100, 10, 5}, {0, uint64_t{1} << 25, 40}};
    for (const auto& test : cases) {
        std::mt19937 random(3);
        DistinctCells cells(test.least, test.range);
        std::set<std::pair<unsigned, uint64_t>> expected;
        std::vector<uint64_t> counts(test.groups);
        for (int page = 0; page < 20; ++page) {
            std::vector<uint64_t> values;
            std::vector<unsigned> groups;
            for (int i = 0; i < 500; ++i) {
                values.push_back(100 + random() % 900);
                groups.push_back(random() % test.groups);
                expected.emplace(test.groups == 1 ? 0 : groups.back(), values.back());
            }
            cells.Add(500, values.data(), test.groups == 1 ? nullptr : groups.data(), 0, counts);
        }
        std::vector<uint64_t> wanted(test.groups);
        for (const auto& [group, value] : expected) ++wanted[group];
        EXPECT_EQ(counts, wanted) << test.range;
    }
}

TEST(CollectingMeasures, AgreeWithASortOfEachGroup) {
    for (const unsigned pageSize : {7u, 1024u}) {
        for (const unsigned keyCount : {0u, 1u}) {
            std::mt19937 random(pageSize + keyCount);
            SampleOptions keys{.distinct = 30, .nulls = 0.1};
            SampleOptions values{.distinct = 400, .nulls = 0.2};
            const auto table = TableOf({SampleColumn(L"long", L"k", 3000, keys, random),
                                        SampleColumn(L"long", L"v", 3000, values, random),
                                        SampleColumn(L"short", L"w", 3000, values, random)});
            table->Build(1);
            const TextRows rows = Rows(*table, {L"k", L"v", L"w"});
            const auto flow = MakeRef<SampleSelect>(table, 0.7, 11);
            const auto real = MakeRef<CastExp>(L"", MakeRef<ColumnExp>(L"v"), Literal(L"double", "0"));
            ColumnNames names;
            if (keyCount > 0) names.insert(L"k");
            const auto aggr =
                MakeRef<Aggr>(flow, names,
                              std::vector<RefCntPtr<Exp>>{Named<QuantileExp>(L"q", real, Fraction(0.3)),
                                                          Named<CountdExp>(L"d", MakeRef<ColumnExp>(L"w"))});
            aggr->Build(pageSize);

            std::map<std::string, std::pair<std::vector<double>, std::set<std::string>>> groups;
            std::vector<std::string> order;
            for (const uint64_t row : flow->GetSelected()) {
                const std::string key = keyCount > 0 ? rows[row][0] : "";
                if (!groups.contains(key)) order.push_back(key);
                auto& [reals, distinct] = groups[key];
                if (rows[row][1] != "NULL") reals.push_back(std::stod(rows[row][1]));
                if (rows[row][2] != "NULL") distinct.insert(rows[row][2]);
            }
            const TextRows results = Rows(*aggr, {L"q", L"d"});
            ASSERT_EQ(results.size(), order.size());
            for (size_t group = 0; group < order.size(); ++group) {
                auto& [reals, distinct] = groups[order[group]];
                EXPECT_EQ(results[group][1], std::to_string(distinct.size()));
                std::sort(reals.begin(), reals.end());
                const double position = static_cast<double>(reals.size() - 1) * 0.3;
                const auto low = static_cast<size_t>(position);
                const double next = reals[std::min(low + 1, reals.size() - 1)];
                EXPECT_DOUBLE_EQ(std::stod(results[group][0]),
                                 reals[low] + (next - reals[low]) * (position - std::floor(position)));
            }
        }
    }
}

RefCntPtr<Exp> Moments(const std::wstring& word, Exp::Arguments arguments) {
    return MakeRef<MomentsExp>(word, word, *MomentsExp::Find(word), std::move(arguments));
}

// Values far from zero and close together are the hard case. The reference goes over them twice, in long double.
TEST(CollectingMeasures, FindMomentsAsTwoPassesDo) {
    std::mt19937 random(5);
    std::normal_distribution<double> spread(0, 1);
    std::vector<std::string> keys, xs, ys;
    std::map<std::string, std::vector<std::pair<long double, long double>>> pairs;
    const auto text = [](double value) {
        std::ostringstream out;
        out << std::setprecision(17) << value;
        return out.str();
    };
    for (int i = 0; i < 4000; ++i) {
        const double x = 1e9 + spread(random);
        const double y = 1e6 + x - 1e9 + 0.5 * spread(random);
        keys.push_back(std::to_string(i % 7));
        xs.push_back(i % 11 == 0 ? "NULL" : text(x));
        ys.push_back(i % 13 == 0 ? "NULL" : text(y));
        if (i % 11 && i % 13) pairs[keys.back()].emplace_back(x, y);
    }
    keys.push_back("8");  // one pair alone
    xs.push_back("1");
    ys.push_back("2");
    const auto table =
        TableOf({ColumnOf(L"long", L"k", keys), ColumnOf(L"double", L"x", xs), ColumnOf(L"double", L"y", ys)});
    const Exp::Arguments both{MakeRef<ColumnExp>(L"x"), MakeRef<ColumnExp>(L"y")};
    const auto aggr = MakeRef<Aggr>(MakeRef<Scan>(table), ColumnNames{L"k"},
                                    std::vector<RefCntPtr<Exp>>{Moments(L"covar", both), Moments(L"corr", both),
                                                                Moments(L"covarp", {both[0], both[0]})});
    aggr->Build(100);
    const TextRows results = Rows(*aggr, {L"k", L"covar", L"corr"});
    ASSERT_EQ(results.size(), 8u);
    for (const Texts& row : results) {
        if (row[0] == "8") {
            EXPECT_EQ(row, (Texts{"8", "NULL", "NULL"}));
            continue;
        }
        const auto& values = pairs[row[0]];
        long double meanX = 0, meanY = 0, xx = 0, yy = 0, xy = 0;
        for (const auto& [x, y] : values) meanX += x / values.size(), meanY += y / values.size();
        for (const auto& [x, y] : values) {
            xx += (x - meanX) * (x - meanX);
            yy += (y - meanY) * (y - meanY);
            xy += (x - meanX) * (y - meanY);
        }
        EXPECT_NEAR(std::stod(row[1]), static_cast<double>(xy / (values.size() - 1)), 1e-12);
        EXPECT_NEAR(std::stod(row[2]), static_cast<double>(xy / std::sqrt(xx * yy)), 1e-12);
    }
}

TEST(CollectingMeasures, RefuseWhatTheyCannotHold) {
    const auto table = TableOf({ColumnOf(L"long", L"v", {"1"})});
    const auto bind = [&](const RefCntPtr<Exp>& exp) { return StatusOf([&] { exp->AllocateColumn(table.get()); }); };
    EXPECT_EQ(bind(Named<QuantileExp>(L"q", MakeRef<ColumnExp>(L"v"), Fraction(0.5))),
              status::QuantileExp_MakePrimitiveColumn);
    EXPECT_EQ(bind(Named<QuantileExp>(L"q", Literal(L"double", "1"), MakeRef<ColumnExp>(L"v"))),
              status::QuantileExp_MakePrimitiveColumn);
    EXPECT_EQ(bind(Moments(L"var", {MakeRef<ColumnExp>(L"v")})), status::MomentsExp_MakePrimitiveColumn);
    EXPECT_EQ(bind(Named<CountdExp>(L"d", MakeRef<ColumnExp>(L"v"))), 0);
}

std::vector<RefCntPtr<Exp>> OrderedMeasures() {
    return {Named<AggrUnaryExp>(L"n", L"countstar"), Named<AggrBinaryExp>(L"s", L"sum", MakeRef<ColumnExp>(L"v")),
            Named<AggrBinaryExp>(L"lo", L"min", MakeRef<ColumnExp>(L"t"))};
}

// Runs within a page and over many, pages without a selected row, groups that fill an output page to the last.
TEST(OrdAggr, AgreesWithAggrOverSortedRows) {
    for (const unsigned distinct : {1u, 3u, 50u, 2000u}) {
        for (const std::wstring type : {L"long", L"text", L"date"}) {
            for (const unsigned pageSize : {1u, 7u, 1024u}) {
                std::mt19937 random(distinct + pageSize);
                const SampleOptions keys{.distinct = distinct, .nulls = 0.05};
                const SampleOptions values{.distinct = 100, .nulls = 0.2};
                const auto table = TableOf({SampleColumn(type, L"k", 2500, keys, random),
                                            SampleColumn(L"short", L"j", 2500, {.distinct = 2}, random),
                                            SampleColumn(L"long", L"v", 2500, values, random),
                                            SampleColumn(L"text", L"t", 2500, values, random)});
                const std::vector<Namespace::SortSpec> specs{{L"k", false}, {L"j", true}};
                const ColumnNames names{L"k", L"j"};
                const auto sorted = [&] { return MakeRef<Order>(table, specs); };
                const auto ordered =
                    MakeRef<OrdAggr>(MakeRef<SampleSelect>(sorted(), 0.6, 5), names, OrderedMeasures());
                const auto hashed = MakeRef<Aggr>(MakeRef<SampleSelect>(sorted(), 0.6, 5), names, OrderedMeasures());
                const std::vector<std::wstring> columns{L"k", L"j", L"n", L"s", L"lo"};
                hashed->Build(pageSize);
                ASSERT_TRUE(OrdAggr::CanCompare(*sorted(), names));
                ASSERT_EQ(Drain(*ordered, columns, pageSize), Rows(*hashed, columns))
                    << distinct << " " << narrow(type) << " " << pageSize;
                ordered->ResetCursor();
            }
        }
    }
}

TEST(OrdAggr, ComparesNoRealKeys) {
    const auto table = TableOf({ColumnOf(L"double", L"d", {"0", "-0"}), ColumnOf(L"long", L"i", {"1", "1"})});
    EXPECT_FALSE(OrdAggr::CanCompare(*table, {L"d"}));
    EXPECT_TRUE(OrdAggr::CanCompare(*table, {L"i"}));
}

}  // namespace
}  // namespace qve
