#include "algebra/CaseExp.h"

#include <gtest/gtest.h>

#include <random>

#include "algebra/ColumnExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/MapExp.h"
#include "algebra/Project.h"
#include "algebra/Scan.h"
#include "algebra/Select.h"
#include "algebra/SelectExp.h"
#include "algebra/status.h"
#include "primitives/vector_level.h"
#include "system/QuillonException.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

using Texts = std::vector<std::string>;

RefCntPtr<Exp> Compare(const std::wstring& op, const std::string& bound) {
    return MakeRef<MapBinaryExp>(L"", op, MakeRef<ColumnExp>(L"a"), Literal(L"long", bound));
}

Texts Project1(const RefCntPtr<LeafTable>& table, RefCntPtr<Exp> exp, unsigned pageSize) {
    exp->SetName(L"result");
    Project flow(MakeRef<Scan>(table), {std::move(exp)});
    Texts cells;
    for (const auto& row : Drain(flow, {L"result"}, pageSize)) cells.push_back(row[0]);
    return cells;
}

const Texts values{"1", "NULL", "3", "4", "NULL", "6", "7", "8"};

TEST(CaseExpTest, TakesTheFirstTrueCondition) {
    const auto table = TableOf({ColumnOf(L"long", L"a", values)});
    for (const unsigned pageSize : {1u, 3u, 1024u}) {
        const auto make = [&](bool withElse) {
            Exp::Arguments arguments{Compare(L"lt", "4"), Literal(L"long", "-1"), Compare(L"lt", "7"),
                                     MakeRef<ColumnExp>(L"a")};
            if (withElse) arguments.push_back(Literal(L"long", "100"));
            return MakeRef<CaseExp>(L"", std::move(arguments));
        };
        // A null condition is not true.
        EXPECT_EQ(Project1(table, make(true), pageSize), (Texts{"-1", "100", "-1", "4", "100", "6", "100", "100"}));
        EXPECT_EQ(Project1(table, make(false), pageSize),
                  (Texts{"-1", "NULL", "-1", "4", "NULL", "6", "NULL", "NULL"}));
    }
}

TEST(CaseExpTest, BranchesSeeOnlyTheirRows) {
    const auto table = TableOf({ColumnOf(L"long", L"a", values)});
    const auto low = MakeRef<CountingExp>(MakeRef<ColumnExp>(L"a"));
    const auto second = MakeRef<CountingExp>(Compare(L"gt", "6"));
    const auto high = MakeRef<CountingExp>(MakeRef<ColumnExp>(L"a"));
    const auto rest = MakeRef<CountingExp>(MakeRef<ColumnExp>(L"a"));
    Project1(table, MakeRef<CaseExp>(L"", Exp::Arguments{Compare(L"lt", "4"), low, second, high, rest}), 1024);
    EXPECT_EQ(low->rows, 2u);
    EXPECT_EQ(second->rows, 6u);
    EXPECT_EQ(high->rows, 2u);
    EXPECT_EQ(rest->rows, 4u);
}

TEST(CaseExpTest, WidensItsBranches) {
    const auto table = TableOf({ColumnOf(L"long", L"a", {"1", "2"}), ColumnOf(L"double", L"d", {"0.5", "1.5"})});
    const auto exp = MakeRef<CaseExp>(L"", Compare(L"lt", "2"), MakeRef<ColumnExp>(L"a"), MakeRef<ColumnExp>(L"d"));
    EXPECT_EQ(Project1(table, exp, 1024), (Texts{"1", "1.5"}));
    EXPECT_EQ(exp->GetDataType(), DataType::real);

    const auto nulls = MakeRef<CaseExp>(L"", Compare(L"lt", "2"), Literal(L"bit", "NULL"), MakeRef<ColumnExp>(L"d"));
    EXPECT_EQ(Project1(table, nulls, 1024), (Texts{"NULL", "1.5"}));

    const auto mixed = MakeRef<CaseExp>(L"", Compare(L"lt", "2"), Literal(L"text", "x"), MakeRef<ColumnExp>(L"d"));
    EXPECT_EQ(StatusOf([&] { Project1(table, mixed, 1); }), status::ResolveCast);
    const auto number = MakeRef<CaseExp>(L"", MakeRef<ColumnExp>(L"a"), Literal(L"long", "1"), Literal(L"long", "2"));
    EXPECT_EQ(StatusOf([&] { Project1(table, number, 1); }), status::CaseExp_MakeColumn);
}

TEST(CaseExpTest, TextOfOneDictionaryKeepsItsTokens) {
    const auto table = TableOf({ColumnOf(L"long", L"a", {"1", "2", "3"}), ColumnOf(L"text", L"t", {"x", "NULL", "y"})});
    const auto exp = MakeRef<CaseExp>(L"", Exp::Arguments{Compare(L"lt", "3"), MakeRef<ColumnExp>(L"t")});
    EXPECT_EQ(Project1(table, exp, 1024), (Texts{"'x'", "NULL", "NULL"}));
    EXPECT_EQ(exp->GetColumn()->GetDict(), table->GetColumn(L"t")->GetDict());
}

TEST(CaseExpTest, TextOfSeveralDictionariesIsMerged) {
    Texts left;
    Texts right;
    Texts numbers;
    Texts expected;
    for (unsigned row = 0; row < 3000; ++row) {
        numbers.push_back(std::to_string(row % 7));
        left.push_back(row % 11 == 0 ? "NULL" : "left " + std::to_string(row % 40));
        right.push_back("right " + std::to_string(row % 300));
        const std::string& value = row % 7 < 3 ? left.back() : row % 7 < 5 ? right.back() : "else";
        expected.push_back(value == "NULL" ? value : "'" + value + "'");
    }
    const auto table =
        TableOf({ColumnOf(L"long", L"a", numbers), ColumnOf(L"text", L"l", left), ColumnOf(L"text", L"r", right)});
    for (const unsigned pageSize : {7u, 1024u}) {
        const auto exp =
            MakeRef<CaseExp>(L"", Exp::Arguments{Compare(L"lt", "3"), MakeRef<ColumnExp>(L"l"), Compare(L"lt", "5"),
                                                 MakeRef<ColumnExp>(L"r"), Literal(L"text", "else")});
        EXPECT_EQ(Project1(table, exp, pageSize), expected);
    }
}

// What is computed for all rows of a page gives the same as what is computed for the rows of each branch.
TEST(CaseExpTest, CheapBranchesGiveTheSameAsOthers) {
    std::mt19937 random(5);
    Texts numbers;
    for (unsigned row = 0; row < 2000; ++row) numbers.push_back(row % 10 ? std::to_string(random() % 9) : "NULL");
    for (const vector_level level : {vector_level::scalar, supported_vector_level()}) {
        set_vector_level(level);
        for (const std::wstring type : {L"tiny", L"short", L"long", L"bigint", L"double", L"date", L"text"}) {
            SCOPED_TRACE(std::string(type.begin(), type.end()));
            const SampleOptions options{.distinct = 50, .nulls = 0.1};
            const auto table =
                TableOf({ColumnOf(L"long", L"a", numbers), SampleColumn(type, L"x", 2000, options, random),
                         type == L"text" ? SampleColumn(type, L"y", 2000, {.distinct = 1}, random)
                                         : SampleColumn(type, L"y", 2000, {.distinct = 90}, random)});
            const auto make = [](bool cheap, bool withElse) {
                const auto see = [cheap](RefCntPtr<Exp> exp) -> RefCntPtr<Exp> {
                    return cheap ? std::move(exp) : MakeRef<CountingExp>(std::move(exp));
                };
                Exp::Arguments arguments{see(Compare(L"lt", "2")), MakeRef<ColumnExp>(L"x"), Compare(L"gt", "6"),
                                         Literal(L"bit", "NULL"),  Compare(L"lt", "4"),      MakeRef<ColumnExp>(L"y")};
                if (withElse) arguments.push_back(MakeRef<ColumnExp>(L"x"));
                return MakeRef<CaseExp>(L"", std::move(arguments));
            };
            for (const unsigned pageSize : {1u, 7u, 33u, 1024u}) {
                for (const bool withElse : {false, true}) {
                    const Texts expected = Project1(table, make(false, withElse), pageSize);
                    ASSERT_EQ(expected.size(), 2000u);
                    const Texts blended = Project1(table, make(true, withElse), pageSize);
                    for (size_t row = 0; row < expected.size(); ++row) {
                        ASSERT_EQ(blended[row], expected[row]) << "row " << row << ", a " << numbers[row] << ", page "
                                                               << pageSize << ", else " << withElse;
                    }
                }
            }
        }
    }
    set_vector_level(supported_vector_level());
}

TEST(CaseExpTest, ConstantsMakeAConstant) {
    const auto exp = MakeRef<CaseExp>(L"", Literal(L"bit", "f"), Literal(L"text", "yes"), Literal(L"text", "no"));
    exp->AllocateColumn(nullptr);
    EXPECT_TRUE(exp->IsConstant());
    EXPECT_EQ(exp->GetPrimitiveStorage(), L"val");
    exp->Evaluate(1, 1, nullptr, nullptr);
    EXPECT_EQ(PageCells(*exp, {0}), Texts{"'no'"});
}

}  // namespace
}  // namespace qve
