// Evaluation by token, and once for each distinct value, against the plain kernels.

#include <gtest/gtest.h>

#include <random>

#include "algebra/ColumnExp.h"
#include "algebra/HashExp.h"
#include "algebra/MapExp.h"
#include "algebra/Scan.h"
#include "algebra/SelectExp.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

constexpr unsigned seed = 20;

struct Sample {
    RefCntPtr<LeafTable> table;
    unsigned rows;
};

// "t" is a dictionary column with the properties that allow tokens, "same" has the literal in every row, so that only
// a kernel over two columns can serve it.
Sample MakeSample(unsigned distinct, double nulls, const std::string& literal) {
    std::mt19937 random(seed + distinct);
    const unsigned rows = 3000;
    const auto t = SampleColumn(L"text", L"t", rows, {.distinct = distinct, .nulls = nulls}, random);
    const auto same = ColumnOf(L"text", L"same", std::vector<std::string>(rows, literal));
    return {TableOf({t, same}), rows};
}

// Runs both expressions over all pages, with a different selection for each, and compares what they say.
void ExpectSameResults(const Sample& sample, Exp& tested, Exp& plain, const std::string& what) {
    const auto scan = MakeRef<Scan>(sample.table);
    tested.AllocateColumn(scan.get());
    plain.AllocateColumn(scan.get());
    std::mt19937 random(seed);
    while (const unsigned extent = scan->Next(257)) {
        std::vector<unsigned> rows;
        for (unsigned row = 0; row < extent; ++row) {
            if (random() % 3) rows.push_back(row);
        }
        const auto count = static_cast<unsigned>(rows.size());
        tested.Evaluate(count, extent, rows.data(), scan.get());
        plain.Evaluate(count, extent, rows.data(), scan.get());
        ASSERT_EQ(PageCells(tested, rows), PageCells(plain, rows)) << what;
    }
}

void ExpectSameSelection(const Sample& sample, Exp& tested, Exp& plain, const std::string& what) {
    const auto scan = MakeRef<Scan>(sample.table);
    tested.AllocateColumn(scan.get());
    plain.AllocateColumn(scan.get());
    while (const unsigned extent = scan->Next(500)) {
        std::vector<unsigned> left(extent + 1);
        std::vector<unsigned> right(extent + 1);
        left.resize(tested.Select(extent, extent, left.data(), nullptr, scan.get()));
        right.resize(plain.Select(extent, extent, right.data(), nullptr, scan.get()));
        ASSERT_EQ(left, right) << what;
        const auto count = static_cast<unsigned>(left.size() / 2);
        std::vector<unsigned> again(extent + 1);
        again.resize(tested.Select(count, extent, again.data(), left.data(), scan.get()));
        left.resize(count);
        ASSERT_EQ(again, left) << what;
    }
}

class TokenComparisonTest : public testing::TestWithParam<std::tuple<unsigned, double, std::string>> {};

TEST_P(TokenComparisonTest, ComparisonsWithALiteral) {
    const auto& [distinct, nulls, literal] = GetParam();
    const Sample sample = MakeSample(distinct, nulls, literal);
    for (const wchar_t* op : {L"eq", L"ne", L"lt", L"le", L"gt", L"ge", L"isdistinct", L"isnotdistinct", L"contains",
                              L"startswith", L"endswith"}) {
        const auto t = [] { return MakeRef<ColumnExp>(L"t"); };
        const auto same = [] { return MakeRef<ColumnExp>(L"same"); };
        const std::wstring name(op);
        const std::string what(name.begin(), name.end());
        ExpectSameResults(sample, *MakeRef<MapBinaryExp>(L"", op, t(), Literal(L"text", literal)),
                          *MakeRef<MapBinaryExp>(L"", op, t(), same()), what);
        ExpectSameResults(sample, *MakeRef<MapBinaryExp>(L"", op, Literal(L"text", literal), t()),
                          *MakeRef<MapBinaryExp>(L"", op, same(), t()), what + " reversed");
        ExpectSameSelection(sample, *MakeRef<SelectBinaryExp>(op, t(), Literal(L"text", literal)),
                            *MakeRef<SelectBinaryExp>(op, t(), same()), what);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Dictionaries, TokenComparisonTest,
    testing::Combine(testing::Values(1u, 10u, 2900u), testing::Values(0.0, 0.2),
                     testing::Values("value 5838", "", "absent", "NULL",
                                     "a text that is longer than any text of the column may ever be")));

TEST(TokenEvaluationTest, EqualityWithALiteralComparesNumbers) {
    const Sample sample = MakeSample(10, 0.1, "value 5838");
    ASSERT_TRUE(sample.table->GetColumn(L"t")->HasProperty(usrpropkey::distinct));
    const Scan scan(sample.table);
    const auto eq = MakeRef<SelectBinaryExp>(L"eq", MakeRef<ColumnExp>(L"t"), Literal(L"text", "value 5838"));
    eq->AllocateColumn(&scan);
    EXPECT_EQ(eq->GetPrimitiveName(), L"sel_eq_ulng_ulng_col_ulng_val");
    const auto plain = MakeRef<SelectBinaryExp>(L"eq", MakeRef<ColumnExp>(L"t"), Literal(L"text", "value 5838"), false);
    plain->AllocateColumn(&scan);
    EXPECT_EQ(plain->GetPrimitiveName(), L"sel_eq_ulng_usr4_col_usr8_val");
}

// A dictionary that goes on growing, as one that a flow fills, brings the value along some time.
TEST(TokenEvaluationTest, LiteralIsLookedUpAgainInAGrowingDictionary) {
    const auto t = ColumnOf(L"text", L"t", {"one", "two"});
    const auto table = TableOf({t});
    const auto scan = MakeRef<Scan>(table);
    const auto eq = MakeRef<SelectBinaryExp>(L"eq", MakeRef<ColumnExp>(L"t"), Literal(L"text", "three"));
    eq->AllocateColumn(scan.get());
    unsigned out[4];
    scan->Next(2);
    EXPECT_EQ(eq->Select(2, 2, out, nullptr, scan.get()), 0u);
    t->Append(1, Atom(L"text", "three"), false);
    t->Seek(0, 3);
    EXPECT_EQ(eq->Select(3, 3, out, nullptr, scan.get()), 1u);
    EXPECT_EQ(out[0], 2u);
}

TEST(TokenEvaluationTest, FunctionsOfOneColumnAreComputedOncePerValue) {
    for (const unsigned distinct : {1u, 10u, 2900u}) {
        const Sample sample = MakeSample(distinct, 0.1, "x");
        for (const wchar_t* op : {L"upper", L"lower", L"trim", L"char_length", L"hash", L"isnull"}) {
            const std::wstring name(op);
            const auto tested = MakeRef<MapUnaryExp>(L"", op, MakeRef<ColumnExp>(L"t"));
            // The tokens as they are, without a memo: the kernel called row by row on fresh pages of one row each.
            const auto scan = MakeRef<Scan>(sample.table);
            const auto single = MakeRef<Scan>(sample.table);
            tested->AllocateColumn(scan.get());
            std::vector<std::string> whole;
            while (const unsigned extent = scan->Next(1000)) {
                tested->Evaluate(extent, extent, nullptr, scan.get());
                for (unsigned row = 0; row < extent; ++row) whole.push_back(PageCells(*tested, {row})[0]);
            }
            for (unsigned row = 0; row < 200; ++row) {
                single->Next(1);
                const auto fresh = MakeRef<MapUnaryExp>(L"", op, MakeRef<ColumnExp>(L"t"));
                fresh->AllocateColumn(single.get());
                fresh->Evaluate(1, 1, nullptr, single.get());
                ASSERT_EQ(whole[row], PageCells(*fresh, {0})[0]) << std::string(name.begin(), name.end());
            }
        }
    }
}

TEST(TokenEvaluationTest, NotNullFlagIsNeverWrong) {
    const auto t = ColumnOf(L"text", L"t", {"a", "b", "a", "NULL", "b"});
    const auto scan = MakeRef<Scan>(TableOf({t}));
    const auto length = MakeRef<MapUnaryExp>(L"", L"char_length", MakeRef<ColumnExp>(L"t"));
    length->AllocateColumn(scan.get());
    scan->Next(3);
    length->Evaluate(3, 3, nullptr, scan.get());
    scan->Next(3);
    length->Evaluate(2, 2, nullptr, scan.get());
    EXPECT_EQ(length->GetResult().flags & column_flags::not_null, 0);
    EXPECT_EQ(PageCells(*length, {0, 1}), (std::vector<std::string>{"NULL", "1"}));
}

// A chain of hashes depends on the keys in their order and on nothing else.
TEST(HashExpTest, ChainsFoldInPlace) {
    const auto table = TableOf(
        {ColumnOf(L"long", L"a", {"1", "2", "1", "1", "2"}), ColumnOf(L"text", L"t", {"x", "x", "x", "y", "x"})});
    const auto scan = MakeRef<Scan>(table);
    const auto first = MakeRef<HashExp>(L"h", L"hash", MakeRef<ColumnExp>(L"a"), true, nullptr);
    const auto chain = MakeRef<HashExp>(L"h", L"rehash", MakeRef<ColumnExp>(L"t"), false, first);
    chain->AllocateColumn(scan.get());
    scan->Next(5);
    for (int repeat = 0; repeat < 3; ++repeat) {
        chain->Evaluate(5, 5, nullptr, scan.get());
        const auto hashes = PageCells(*chain, {0, 1, 2, 3, 4});
        EXPECT_EQ(hashes[0], hashes[2]);
        EXPECT_EQ(hashes[1], hashes[4]);
        EXPECT_NE(hashes[0], hashes[1]);
        EXPECT_NE(hashes[0], hashes[3]);
    }
    EXPECT_EQ(chain->GetResult().data, first->GetResult().data);
}

}  // namespace
}  // namespace qve
