#include <gtest/gtest.h>

#include "system/QuillonException.h"
#include "tests/vql/raised_error.h"
#include "tests/vql/syntax_text.h"
#include "types/types_initialization.h"
#include "vql/VQLColumnMap.h"
#include "vql/VQLColumnSpace.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLMacros.h"
#include "vql/VQLQueries.h"

namespace qve {
namespace {

using test::Raised;
using test::RaisedError;
using test::SyntaxText;

class VQLModelTest : public testing::Test {
protected:
    VQLIdentifier Name(const wchar_t* name) { return VQLIdentifier::Unquoted(name, m_text.dictionary); }

    SyntaxText m_text;
};

TEST_F(VQLModelTest, AColumnMapIsAFunction) {
    VQLColumnMap map;
    map.Insert(Name(L"a"), Name(L"x"));
    map.Insert(Name(L"b"), Name(L"y"));
    map.Insert(Name(L"a"), Name(L"z"));
    EXPECT_EQ(std::distance(map.begin(), map.end()), 2);
    EXPECT_EQ(map.begin()->second, Name(L"z"));
    EXPECT_EQ(map.Map(Name(L"a")), Name(L"z"));
    EXPECT_EQ(map.Remap(Name(L"y")), Name(L"b"));
    EXPECT_EQ(Raised([&] { map.Map(Name(L"c")); }), (RaisedError{49007, "no mapping for column [c]", 0, 0}));
    EXPECT_EQ(Raised([&] { map.Remap(Name(L"x")); }), (RaisedError{49008, "no mapping for column [x]", 0, 0}));
    EXPECT_EQ(map.PartialMap(Name(L"c")), Name(L"c"));
    EXPECT_EQ(map.PartialRemap(Name(L"x")), Name(L"x"));
    map.Invert();
    EXPECT_EQ(map.Map(Name(L"y")), Name(L"b"));
}

TEST_F(VQLModelTest, AColumnSpaceIsSortedByName) {
    const auto column = [&](const wchar_t* name, VQLDataType type) { return MakeRef<VQLColumn>(Name(name), type); };
    VQLColumnSpace space(
        {column(L"b", VQLDataType::integer), column(L"a", VQLDataType::integer), column(L"b", VQLDataType::date)});
    space.AddColumn(column(L"ab", VQLDataType::integer));
    space.AddColumn(column(L"a", VQLDataType::string));
    std::wstring names;
    for (const auto& c : space.GetColumns()) names += c->GetName().AsString() + FormatDataType(c->GetDataType());
    EXPECT_EQ(names, L"[a]string[ab]integer[b]date");
    EXPECT_FALSE(space.HasColumn(Name(L"c")));
    EXPECT_EQ(Raised([&] { space.GetColumn(Name(L"c")); }).text, "no such column [c]");
}

TEST_F(VQLModelTest, AColumnReadsSizesLeniently) {
    VQLColumn column(Name(L"a"), VQLDataType::integer, {{usrpropkey::size, L"  12x"}, {usrpropkey::scale, L" "}});
    EXPECT_EQ(column.GetSizeProperty(usrpropkey::size), 12u);
    EXPECT_EQ(column.GetSizeProperty(usrpropkey::scale), 0u);
    EXPECT_EQ(column.GetDataWidth(), 12u);
    column.SetProperty(usrpropkey::storagewidth, L"4");
    EXPECT_EQ(column.GetDataWidth(), 4u);
    EXPECT_THROW(column.GetProperty(usrpropkey::precision), QVE_RangeError);
}

TEST_F(VQLModelTest, ACaseSplitsItsArguments) {
    const auto argument = [&](const wchar_t* name) {
        return RefCntPtr<VQLExpression>(MakeRef<VQLIdentifierExpression>(VQLPosition(), Name(name)));
    };
    const VQLCaseExpression expression(
        {}, {argument(L"p"), argument(L"a"), argument(L"q"), argument(L"b"), argument(L"c")});
    EXPECT_EQ(expression.GetPredicates().size(), 2u);
    EXPECT_EQ(expression.GetPredicates()[1], expression.GetArguments()[2]);
    ASSERT_EQ(expression.GetThens().size(), 3u);
    EXPECT_EQ(expression.GetThens()[2], expression.GetArguments()[4]);
    EXPECT_EQ(Raised([&] {
                  VQLCaseExpression({}, {argument(L"p"), argument(L"a")});
              }).text,
              "invalid number of case arguments");
}

TEST_F(VQLModelTest, DependenciesMayGoInCircles) {
    const auto query = m_text.Query(L"(table [t])");
    query->SetDependencies({{Name(L"a"), {Name(L"b")}}, {Name(L"b"), {Name(L"a"), Name(L"c")}}});
    EXPECT_TRUE(query->DependsOn(Name(L"a"), Name(L"c")));
    EXPECT_FALSE(query->DependsOn(Name(L"a"), Name(L"d")));
    EXPECT_FALSE(query->DependsOn(Name(L"c"), Name(L"a")));
}

TEST_F(VQLModelTest, OrderingsHoldForEqualColumns) {
    const auto query = m_text.Query(L"(table [t])");
    query->SetSortSpecsList({{{Name(L"a"), VQLSortSense::ascending}, {Name(L"b"), VQLSortSense::descending}}});
    query->SetEquivalences({{Name(L"a"), 0}, {Name(L"x"), 0}, {Name(L"b"), 1}});
    EXPECT_TRUE(query->IsSortedBy({}));
    EXPECT_TRUE(query->IsSortedBy({{Name(L"x"), VQLSortSense::ascending}}));
    EXPECT_FALSE(query->IsSortedBy({{Name(L"x"), VQLSortSense::descending}}));
    EXPECT_FALSE(query->IsSortedBy({{Name(L"b"), VQLSortSense::descending}}));
    EXPECT_EQ(query->GetEquivalentColumns(Name(L"a")), (VQLIdentifierSet{Name(L"a"), Name(L"x")}));
    EXPECT_EQ(query->GetEquivalentColumns(Name(L"q")), (VQLIdentifierSet{Name(L"q")}));
    EXPECT_EQ(Raised([&] { query->GetColumnSpace(); }).text, "VQLQuery: columnspace not defined");
}

TEST_F(VQLModelTest, MacrosParse) {
    types_initialization();
    for (const auto& [name, macro] : GetVQLMacros()) {
        EXPECT_NO_THROW(m_text.Expression(macro.text)) << narrow(name);
        for (unsigned i = 1; i <= macro.argumentCount; ++i)
            EXPECT_NE(macro.text.find(L"%" + std::to_wstring(i)), std::wstring::npos) << narrow(name);
    }
    const auto type = [&](const wchar_t* macro) {
        return DynamicPtrCast<VQLLiteralExpression>(m_text.Expression(GetVQLMacros()[macro].text))
            ->GetLiteral()
            .GetType();
    };
    EXPECT_EQ(type(L"now"), VQLDataType::datetime);
    EXPECT_EQ(type(L"utc"), VQLDataType::datetime);
    EXPECT_EQ(type(L"today"), VQLDataType::date);
    EXPECT_NE(GetVQLMacros()[L"utc"].text, VQLMacros::s_singleton.at(L"utc").text);
}

TEST_F(VQLModelTest, TypesComeFromProperties) {
    types_initialization();
    const auto type = [](usrprops properties) { return VQLDataTypeFromProps(properties); };
    const auto atom = [&](const wchar_t* name) {
        return type({{usrpropkey::factory, L"builtin"}, {usrpropkey::builtin, name}});
    };
    EXPECT_EQ(atom(L"oid"), VQLDataType::integer);
    EXPECT_EQ(atom(L"tiny"), VQLDataType::integer);
    EXPECT_EQ(atom(L"bit"), VQLDataType::boolean);
    EXPECT_EQ(atom(L"float"), VQLDataType::double_);
    EXPECT_EQ(atom(L"date"), VQLDataType::date);
    EXPECT_EQ(atom(L"datetime"), VQLDataType::datetime);
    EXPECT_EQ(atom(L"duration"), VQLDataType::duration);
    EXPECT_EQ(type({{usrpropkey::factory, L"varchar"}}), VQLDataType::string);
    EXPECT_EQ(FormatDataType(static_cast<VQLDataType>(99)), L"<invalid>");
}

}  // namespace
}  // namespace qve
