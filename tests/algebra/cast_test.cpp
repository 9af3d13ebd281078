#include "algebra/CastExp.h"

#include <gtest/gtest.h>

#include "algebra/ColumnExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/Project.h"
#include "algebra/Scan.h"
#include "algebra/status.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"
#include "types/builtin.h"
#include "types/varchar.h"

namespace qve {
namespace {

using Texts = std::vector<std::string>;

RefCntPtr<Exp> NullOf(const usrtype* type) {
    return MakeRef<ConstantExp>(type->null());
}

Texts Cast(const std::wstring& from, const Texts& values, const usrtype* to, unsigned pageSize = 1024) {
    Project flow(MakeRef<Scan>(TableOf({ColumnOf(from, L"a", values)})),
                 {MakeRef<CastExp>(L"result", MakeRef<ColumnExp>(L"a"), NullOf(to))});
    EXPECT_EQ(flow.DescribeColumn(L"result")->GetType(), to);
    Texts cells;
    for (const auto& row : Drain(flow, {L"result"}, pageSize)) cells.push_back(row[0]);
    return cells;
}

TEST(CastExpTest, ScalarsAndText) {
    const auto* bigint = builtin::usrtypeof<long long>();
    const auto* real = builtin::usrtypeof<double>();
    EXPECT_EQ(Cast(L"long", {"1", "NULL", "-3"}, bigint), (Texts{"1", "NULL", "-3"}));
    EXPECT_EQ(Cast(L"long", {"1", "NULL", "-3"}, builtin::usrtypeof<int>(), 1), (Texts{"1", "NULL", "-3"}));
    EXPECT_EQ(Cast(L"double", {"1.5", "NULL", "-3.25"}, builtin::usrtypeof<int>()), (Texts{"1", "NULL", "-3"}));
    EXPECT_EQ(Cast(L"text", {"12", "nonsense", "NULL", "-7"}, bigint), (Texts{"12", "NULL", "NULL", "-7"}));
    EXPECT_EQ(Cast(L"text", {"12", "nonsense", "NULL", "-7"}, builtin::usrtypeof<short>(), 2),
              (Texts{"12", "NULL", "NULL", "-7"}));
    EXPECT_EQ(Cast(L"text", {"1.25", "NULL"}, real), (Texts{"1.25", "NULL"}));
    EXPECT_EQ(Cast(L"text", {"2020-02-29", "x"}, builtin::usrtypeof<date>()).back(), "NULL");
}

TEST(CastExpTest, ToTextOfAnyShape) {
    const auto* narrow = varchar::usrtypeof(3, 1);
    const auto* wide = varchar::usrtypeof(50, 2);
    EXPECT_EQ(Cast(L"long", {"12", "NULL", "12345"}, wide), (Texts{"'12'", "NULL", "'12345'"}));
    // Text is cut to the characters that the type has.
    EXPECT_EQ(Cast(L"text", {"abc", "abcdefghijklmnop", "NULL", "\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4"}, narrow, 2),
              (Texts{"'abc'", "'abc'", "NULL", "'\xC3\xA4\xC3\xA4\xC3\xA4'"}));
    EXPECT_EQ(Cast(L"text", {"abc", "\xC3\xA4", "NULL"}, wide), (Texts{"'abc'", "'\xC3\xA4'", "NULL"}));
    EXPECT_EQ(Cast(L"text", {"abc", "NULL"}, varchar::usrtypeof(50, 1)), (Texts{"'abc'", "NULL"}));
}

TEST(CastExpTest, ConstantsNeedNoKernel) {
    const auto exp = MakeRef<CastExp>(L"", Literal(L"text", "3.7"), NullOf(builtin::usrtypeof<int>()));
    exp->AllocateColumn(nullptr);
    EXPECT_TRUE(exp->IsConstant());
    exp->Evaluate(1, 1, nullptr, nullptr);
    EXPECT_EQ(PageCells(*exp, {0}), Texts{"3"});

    const ConstantExp text(Atom(L"text", "abc"));
    EXPECT_TRUE(CastConstant(text, builtin::primitive_props(L"long"))->IsNull());
    EXPECT_EQ(CastConstant(text, varchar::propsof(2, 2))->GetColumn()->GetType(), varchar::usrtypeof(2, 2));
}

TEST(CastExpTest, PlainTypesConvertInTwoStepsWhereNoKernelDoesItInOne) {
    EXPECT_EQ(Cast(L"duration", {"1:00:00:00", "NULL"}, builtin::usrtypeof<date>()).back(), "NULL");
    EXPECT_EQ(Cast(L"date", {"2020-02-29", "NULL"}, builtin::usrtypeof<bit>()), (Texts{"t", "NULL"}));
    EXPECT_EQ(Cast(L"uchr", {"3"}, builtin::usrtypeof<duration>()), (Texts{"3:00:00:00"}));
    // A constant becomes what a row of the same value becomes.
    for (const wchar_t* from : {L"bit", L"tiny", L"double", L"date", L"datetime", L"duration"}) {
        for (const wchar_t* to : {L"bit", L"bigint", L"double", L"date", L"datetime", L"duration"}) {
            const bool day = std::wstring_view(from).starts_with(L"date");
            const std::string value = day                                      ? "2020-02-29"
                                      : std::wstring_view(from) == L"duration" ? "2:00:00:00"
                                      : std::wstring_view(from) == L"bit"      ? "t"
                                                                               : "1";
            const Texts ofColumn = Cast(from, {value}, usrtype::resolve(builtin::primitive_props(to)));
            const auto constant = CastConstant(ConstantExp(Atom(from, value)), builtin::primitive_props(to));
            EXPECT_EQ(PageCells(*constant, {0}), ofColumn);
        }
    }
}

TEST(ResolveCastTest, CommonTypes) {
    const auto common = [](const std::wstring& a, const std::wstring& b) {
        const usrtype* type = CommonType(builtin::primitive_props(a), builtin::primitive_props(b));
        EXPECT_EQ(type, CommonType(builtin::primitive_props(b), builtin::primitive_props(a)));
        return type->name();
    };
    EXPECT_EQ(common(L"tiny", L"bigint"), L"bigint");
    EXPECT_EQ(common(L"bit", L"short"), L"short");
    EXPECT_EQ(common(L"uchr", L"tiny"), L"short");
    EXPECT_EQ(common(L"uchr", L"ulng"), L"ulng");
    EXPECT_EQ(common(L"ulng", L"tiny"), L"bigint");
    EXPECT_EQ(common(L"float", L"short"), L"float");
    EXPECT_EQ(common(L"float", L"long"), L"double");
    EXPECT_EQ(common(L"float", L"double"), L"double");
    EXPECT_EQ(common(L"double", L"bigint"), L"double");
    EXPECT_EQ(common(L"date", L"datetime"), L"datetime");
    EXPECT_EQ(CommonType(varchar::propsof(5, 2), varchar::propsof(9, 1)), varchar::usrtypeof(9, 2));
    try {
        common(L"date", L"long");
        FAIL() << "no exception";
    } catch (const QVE_InvalidArgument& fault) {
        EXPECT_STREQ(fault.what(), "ResolveCast: date, long");
    }
    const auto a = Literal(L"tiny", "1");
    const auto b = Literal(L"bigint", "2");
    const auto [left, right] = ResolveCast(a, b);
    EXPECT_EQ(right, b);
    left->AllocateColumn(nullptr);
    EXPECT_EQ(left->GetColumn()->GetType(), b->GetColumn()->GetType());
}

}  // namespace
}  // namespace qve
