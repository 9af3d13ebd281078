#include <gtest/gtest.h>

#include "algebra/BooleanExp.h"
#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/LookupExp.h"
#include "algebra/MapExp.h"
#include "algebra/Scan.h"
#include "algebra/status.h"
#include "system/QuillonException.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"
#include "types/usrtype.h"

namespace qve {
namespace {

using Cells = std::vector<std::string>;

// A table of keys and, as the last column, values.
RefCntPtr<Table> LookupTableOf(const std::vector<RefCntPtr<Column>>& columns) {
    for (size_t i = 0; i < columns.size(); ++i) columns[i]->SetProperty(usrpropkey::ordinal, std::to_wstring(i));
    return TableOf(columns);
}

// The results for all rows of `table`, page by page, for the odd rows only when asked.
Cells Evaluated(const RefCntPtr<LeafTable>& table, Exp& exp, unsigned pageSize, bool odd = false) {
    const auto scan = MakeRef<Scan>(table);
    exp.AllocateColumn(scan.get());
    Cells cells;
    while (const unsigned extent = scan->Next(pageSize)) {
        std::vector<unsigned> rows;
        for (unsigned row = odd ? 1 : 0; row < extent; row += odd ? 2 : 1) rows.push_back(row);
        exp.Evaluate(static_cast<unsigned>(rows.size()), extent, odd ? rows.data() : nullptr, scan.get());
        for (std::string& cell : PageCells(exp, rows)) cells.push_back(std::move(cell));
    }
    return cells;
}

TEST(LookupExpTest, FindsTheFirstRowOfEachKey) {
    const auto rows = TableOf({ColumnOf(L"long", L"a", {"1", "NULL", "3", "4", "7", "1"}),
                               ColumnOf(L"text", L"s", {"x", "y", "x", "NULL", "y", "y"})});
    const auto make = [](Exp::Arguments keys, usratom otherwise) {
        std::vector<RefCntPtr<Column>> columns{ColumnOf(L"long", L"k", {"3", "1", "NULL", "1", "4"})};
        if (keys.size() == 2) columns.push_back(ColumnOf(L"text", L"l", {"x", "y", "y", "y", "NULL"}));
        columns.push_back(ColumnOf(L"text", L"v", {"three", "one", "none", "again", "NULL"}));
        return MakeRef<LookupExp>(L"found", std::move(keys), LookupTableOf(columns), std::move(otherwise));
    };
    const auto a = [] { return MakeRef<ColumnExp>(L"a"); };
    const auto s = [] { return MakeRef<ColumnExp>(L"s"); };
    for (const unsigned pageSize : {1u, 4u, 100u}) {
        EXPECT_EQ(Evaluated(rows, *make({a()}, {}), pageSize),
                  (Cells{"'one'", "'none'", "'three'", "NULL", "NULL", "'one'"}));
        // What is found as null is no miss.
        EXPECT_EQ(Evaluated(rows, *make({a(), s()}, Atom(L"text", "else")), pageSize),
                  (Cells{"'else'", "'none'", "'three'", "NULL", "'else'", "'one'"}));
    }
    EXPECT_EQ(Evaluated(rows, *make({a()}, Atom(L"text", "else")), 100, true), (Cells{"'none'", "NULL", "'one'"}));
}

TEST(LookupExpTest, TextsAreFoundOnceForEachToken) {
    Cells texts;
    Cells expected;
    for (unsigned row = 0; row < 3000; ++row) {
        const unsigned value = row * 7 % 50;
        texts.push_back(row % 13 == 0 ? "NULL" : "t" + std::to_string(value));
        expected.push_back(row % 13 == 0 ? "-1" : value < 20 ? std::to_string(value) : "99");
    }
    Cells keys{"NULL"};
    Cells values{"-1"};
    for (unsigned value = 0; value < 20; ++value) {
        keys.push_back("t" + std::to_string(value));
        values.push_back(std::to_string(value));
    }
    const auto rows = TableOf({ColumnOf(L"text", L"s", texts)});
    for (const unsigned pageSize : {64u, 1024u}) {
        LookupExp exp(L"", {MakeRef<ColumnExp>(L"s")},
                      LookupTableOf({ColumnOf(L"text", L"k", keys), ColumnOf(L"long", L"v", values)}),
                      Atom(L"long", "99"));
        EXPECT_EQ(Evaluated(rows, exp, pageSize), expected);
    }
}

TEST(LookupExpTest, ConstantKeysMakeOneValue) {
    LookupExp exp(L"", {Literal(L"long", "3")},
                  LookupTableOf({ColumnOf(L"long", L"k", {"2", "3"}), ColumnOf(L"double", L"v", {"0.5", "1.5"})}));
    EXPECT_EQ(Evaluated(TableOf({ColumnOf(L"long", L"a", {"1"})}), exp, 10), Cells{"1.5"});
    EXPECT_TRUE(exp.IsConstant());
    EXPECT_EQ(exp.GetPrimitiveStorage(), L"val");
}

TEST(LookupExpTest, TheTableMustSayWhatItsColumnsAre) {
    const auto made = [](std::vector<std::wstring> ordinals) {
        return StatusOf([&] {
            std::vector<RefCntPtr<Column>> columns;
            for (const std::wstring& ordinal : ordinals) {
                columns.push_back(ColumnOf(L"long", L"c" + std::to_wstring(columns.size()), {"1"}));
                if (!ordinal.empty()) columns.back()->SetProperty(usrpropkey::ordinal, ordinal);
            }
            LookupExp(L"", {MakeRef<ColumnExp>(L"a")}, TableOf(columns));
        });
    };
    EXPECT_EQ(made({L"1", L"0"}), 0);
    EXPECT_EQ(made({L"0", L"2"}), status::LookupExp_ordinal);
    EXPECT_EQ(made({L"0", L""}), status::LookupExp_ordinal);
    EXPECT_EQ(made({L"0"}), status::LookupExp_import);
    EXPECT_EQ(made({L"0", L"1", L"1"}), status::LookupExp_import);
}

RefCntPtr<Exp> Call(const std::wstring& op, RefCntPtr<Exp> a, RefCntPtr<Exp> b) {
    return MakeRef<MapBinaryExp>(L"", op, std::move(a), std::move(b));
}
RefCntPtr<Exp> Is(const std::wstring& column, const std::string& value) {
    return Call(L"eq", MakeRef<ColumnExp>(column), Literal(L"long", value));
}
RefCntPtr<Exp> IsNull(const std::wstring& column) {
    return MakeRef<MapUnaryExp>(L"", L"isnull", MakeRef<ColumnExp>(column));
}
RefCntPtr<Exp> And(Exp::Arguments parts) {
    return MakeRef<BooleanExp>(L"", BooleanExp::opAnd, std::move(parts));
}
RefCntPtr<Exp> Or(Exp::Arguments parts) {
    return MakeRef<BooleanExp>(L"", BooleanExp::opOr, std::move(parts));
}

TEST(SumOfProductsTest, ListsTheValuesOfACondition) {
    const auto text = [](const SumOfProducts& sum) {
        std::string all;
        for (const auto& product : sum.products) {
            for (const usratom& value : product) {
                all += value.isnull() ? "null " : std::to_string(static_cast<long long>(value)) + " ";
            }
            all += "; ";
        }
        return all;
    };
    EXPECT_EQ(text(LookupExp::ExtractSumOfProducts(*Is(L"a", "5"), {L"a"})), "5 ; ");
    EXPECT_EQ(text(SumOfProducts::Extract(*Or({Is(L"a", "5"), Or({IsNull(L"a"), Is(L"a", "7")})}), {L"a"})),
              "5 ; null ; 7 ; ");
    // In whatever order, with a product that is never true.
    EXPECT_EQ(text(SumOfProducts::Extract(
                  *Or({And({Is(L"b", "1"), Is(L"a", "2")}), And({Is(L"a", "NULL"), Is(L"b", "1")}),
                       And({And({IsNull(L"b")}), Call(L"eq", Literal(L"long", "3"), MakeRef<ColumnExp>(L"a"))})}),
                  {L"a", L"b"})),
              "2 1 ; 3 null ; ");
}

TEST(SumOfProductsTest, SaysWhatDoesNotFit) {
    const auto fault = [](const RefCntPtr<Exp>& condition) -> std::string {
        EXPECT_FALSE(SumOfProducts::Find(*condition, {L"a", L"b"}));
        try {
            SumOfProducts::Extract(*condition, {L"a", L"b"});
        } catch (const QVE_InvalidArgument& error) {
            EXPECT_EQ(error.GetStatus(), status::SumOfProducts_Extract);
            return error.GetText();
        }
        return "";
    };
    const auto a = [] { return MakeRef<ColumnExp>(L"a"); };
    const auto one = [] { return Literal(L"long", "1"); };
    EXPECT_EQ(fault(And({Is(L"a", "1"), Or({Is(L"b", "1"), Is(L"b", "2")})})), "OrExp: Wrong level");
    EXPECT_EQ(fault(Call(L"eq", And({a(), a()}), one())), "AndExp: Wrong level");
    EXPECT_EQ(fault(Call(L"eq", Or({a(), a()}), one())), "BooleanExp: Wrong level");
    EXPECT_EQ(fault(Call(L"eq", Is(L"a", "1"), one())), "PrimitiveExp: Wrong level");
    EXPECT_EQ(fault(a()), "ColumnExp: Wrong level");
    EXPECT_EQ(fault(one()), "ConstantExp: Wrong level");
    EXPECT_EQ(fault(Is(L"c", "1")), "ColumnExp: Unknown column");
    EXPECT_EQ(fault(Call(L"eq", a(), a())), "ColumnExp: Multiple columns");
    EXPECT_EQ(fault(Call(L"eq", one(), one())), "ConstantExp: Multiple values");
    EXPECT_EQ(fault(Call(L"lt", a(), one())), "PrimitiveExp: Invalid comparator");
    EXPECT_EQ(fault(Is(L"a", "1")), "PrimitiveExp: Missing key");
    EXPECT_EQ(fault(And({Is(L"a", "1"), Is(L"a", "1"), Is(L"b", "1")})), "PrimitiveExp: Duplicate key");
    EXPECT_EQ(fault(Call(L"eq", a(), MakeRef<CastExp>(L"", one(), one()))), "CastExp");
}

}  // namespace
}  // namespace qve
