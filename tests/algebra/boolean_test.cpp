#include "algebra/BooleanExp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "algebra/ColumnExp.h"
#include "algebra/Scan.h"
#include "algebra/SelectExp.h"
#include "algebra/status.h"
#include "system/QuillonException.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

// False, true and null as they print.
std::string And(const std::string& a, const std::string& b) {
    if (a == "f" || b == "f") return "f";
    return a == "NULL" || b == "NULL" ? "NULL" : "t";
}
std::string Or(const std::string& a, const std::string& b) {
    if (a == "t" || b == "t") return "t";
    return a == "NULL" || b == "NULL" ? "NULL" : "f";
}

struct Bits {
    std::vector<std::vector<std::string>> columns;
    RefCntPtr<Scan> scan;
    unsigned rows;
};

Bits RandomBits(unsigned rows, unsigned columns, std::mt19937& random) {
    Bits bits{{}, nullptr, rows};
    std::vector<RefCntPtr<Column>> table;
    const char* const values[] = {"f", "t", "NULL"};
    for (unsigned c = 0; c < columns; ++c) {
        std::vector<std::string> cells;
        for (unsigned row = 0; row < rows; ++row) cells.push_back(values[random() % 3]);
        table.push_back(ColumnOf(L"bit", L"c" + std::to_wstring(c), cells));
        bits.columns.push_back(std::move(cells));
    }
    bits.scan = MakeRef<Scan>(TableOf(table));
    bits.scan->Next(rows);
    return bits;
}

Exp::Arguments Columns(const Bits& bits) {
    Exp::Arguments arguments;
    for (size_t c = 0; c < bits.columns.size(); ++c) {
        arguments.push_back(MakeRef<ColumnExp>(L"c" + std::to_wstring(c)));
    }
    return arguments;
}

std::vector<unsigned> RandomSelection(unsigned rows, std::mt19937& random) {
    std::vector<unsigned> selection;
    for (unsigned row = 0; row < rows; ++row) {
        if (random() % 2) selection.push_back(row);
    }
    return selection;
}

TEST(BooleanExpTest, IsThreeValuedWithAndWithoutSelection) {
    std::mt19937 random(7);
    for (const wchar_t* op : {BooleanExp::opAnd, BooleanExp::opOr}) {
        for (unsigned rows = 1; rows < 40; ++rows) {
            const Bits bits = RandomBits(rows, 2 + rows % 3, random);
            std::vector<unsigned> selected = RandomSelection(rows, random);
            const bool all = rows % 2;
            if (all) {
                selected.resize(rows);
                std::iota(selected.begin(), selected.end(), 0u);
            }
            const unsigned* const sel = all ? nullptr : selected.data();
            const auto count = static_cast<unsigned>(selected.size());

            std::vector<std::string> expected;
            std::vector<unsigned> passing;
            for (const unsigned row : selected) {
                std::string value = bits.columns[0][row];
                for (size_t c = 1; c < bits.columns.size(); ++c) {
                    value =
                        op == BooleanExp::opAnd ? And(value, bits.columns[c][row]) : Or(value, bits.columns[c][row]);
                }
                if (value == "t") passing.push_back(row);
                expected.push_back(std::move(value));
            }
            const auto exp = MakeRef<BooleanExp>(L"both", op, Columns(bits));
            exp->AllocateColumn(bits.scan.get());
            exp->Evaluate(count, rows, sel, bits.scan.get());
            EXPECT_EQ(PageCells(*exp, selected), expected);

            std::vector<unsigned> out(rows + 1);
            out.resize(exp->Select(count, rows, out.data(), sel, bits.scan.get()));
            EXPECT_EQ(out, passing);
        }
    }
}

TEST(BooleanExpTest, LaterArgumentsSeeOnlyUndecidedRows) {
    const auto table = TableOf(
        {ColumnOf(L"bit", L"a", {"t", "f", "NULL", "t", "f"}), ColumnOf(L"bit", L"b", {"t", "t", "t", "f", "f"})});
    const auto scan = MakeRef<Scan>(table);
    scan->Next(5);
    for (const wchar_t* op : {BooleanExp::opAnd, BooleanExp::opOr}) {
        const auto second = MakeRef<CountingExp>(MakeRef<ColumnExp>(L"b"));
        const auto third = MakeRef<CountingExp>(MakeRef<ColumnExp>(L"b"));
        const auto exp = MakeRef<BooleanExp>(L"", op, Exp::Arguments{MakeRef<ColumnExp>(L"a"), second, third});
        exp->AllocateColumn(scan.get());
        exp->Evaluate(5, 5, nullptr, scan.get());
        EXPECT_EQ(second->rows, 3u);  // not false: 1, 3, 4; not true: 2, 3, 5
        EXPECT_EQ(third->rows, op == BooleanExp::opAnd ? 2u : 1u);
    }
}

TEST(BooleanExpTest, ConstantsAndSelectNodes) {
    const auto scan = MakeRef<Scan>(TableOf({ColumnOf(L"long", L"a", {"1", "2", "NULL", "4", "5", "6"})}));
    scan->Next(6);
    const auto above = [](const std::string& bound) {
        return MakeRef<SelectBinaryExp>(L"gt", MakeRef<ColumnExp>(L"a"), Literal(L"long", bound));
    };
    const auto below = [](const std::string& bound) {
        return MakeRef<SelectBinaryExp>(L"lt", MakeRef<ColumnExp>(L"a"), Literal(L"long", bound));
    };
    const auto selected = [&](const wchar_t* op, Exp::Arguments arguments) {
        const auto exp = MakeRef<BooleanExp>(L"", op, std::move(arguments));
        exp->AllocateColumn(scan.get());
        std::vector<unsigned> out(7);
        out.resize(exp->Select(6, 6, out.data(), nullptr, scan.get()));
        return out;
    };
    using Rows = std::vector<unsigned>;
    const auto t = [] { return Literal(L"bit", "t"); };
    const auto f = [] { return Literal(L"bit", "f"); };
    EXPECT_EQ(selected(BooleanExp::opAnd, {above("1"), below("6"), above("2")}), (Rows{3, 4}));
    EXPECT_EQ(selected(BooleanExp::opOr, {below("2"), above("5"), below("2")}), (Rows{0, 5}));
    EXPECT_EQ(selected(BooleanExp::opAnd, {t(), above("4")}), (Rows{4, 5}));
    EXPECT_EQ(selected(BooleanExp::opAnd, {above("4"), f()}), Rows());
    EXPECT_EQ(selected(BooleanExp::opOr, {f(), above("4")}), (Rows{4, 5}));
    EXPECT_EQ(selected(BooleanExp::opOr, {above("4"), t()}), (Rows{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(selected(BooleanExp::opAnd, {t(), t()}), (Rows{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(selected(BooleanExp::opAnd, {MakeRef<BooleanExp>(L"", BooleanExp::opOr, below("2"), above("4")),
                                           above("1"), above("1"), above("1")}),
              (Rows{4, 5}));

    EXPECT_EQ(StatusOf([&] { above("1")->Evaluate(6, 6, nullptr, scan.get()); }), status::SelectExp_Evaluate);
}

TEST(BooleanExpTest, RefusesOtherTypesWhenBound) {
    const auto scan = MakeRef<Scan>(TableOf({ColumnOf(L"long", L"a", {"1"})}));
    const auto exp = MakeRef<BooleanExp>(L"", BooleanExp::opAnd, MakeRef<ColumnExp>(L"a"), Literal(L"bit", "t"));
    try {
        exp->AllocateColumn(scan.get());
        FAIL() << "no exception";
    } catch (const QVE_InvalidArgument& fault) {
        EXPECT_STREQ(fault.what(), "BooleanExp::MakeColumn: Non-Boolean argument");
    }
}

}  // namespace
}  // namespace qve
