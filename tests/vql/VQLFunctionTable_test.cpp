#include "vql/VQLFunctionTable.h"

#include <gtest/gtest.h>

#include "tests/vql/raised_error.h"
#include "vql/CreateFunctions.h"

namespace qve {
namespace {

using test::Raised;
using test::RaisedError;

/// Types from letters: I integer, D double, B boolean, S string, d date, t datetime, u duration, ? unknown.
VQLFunctionTable::Types Types(const char* letters) {
    VQLFunctionTable::Types types;
    for (; *letters; ++letters) {
        const char* const order = "?IDBSdtu";
        types.push_back(static_cast<VQLDataType>(std::char_traits<char>::find(order, 8, *letters) - order));
    }
    return types;
}

char Letter(VQLDataType type) {
    return "?IDBSdtuP"[static_cast<int>(type)];
}

/// The one resolution, as "op result arguments".
std::string Resolved(const wchar_t* name, const char* types) {
    const VQLFunction& function = VQLFunction::Table().Resolve(name, Types(types));
    std::string text = narrow(function.GetPrimitiveOp()) + " " + Letter(function.GetReturnType()) + " ";
    for (const VQLDataType type : function.GetArguments()) text += Letter(type);
    return function.IsAggregate() ? text + " aggregate" : text;
}

RaisedError ResolveError(const wchar_t* name, const char* types) {
    return Raised([&] { Resolved(name, types); });
}

size_t MatchCount(const wchar_t* name, const char* types) {
    return VQLFunction::Table().ResolveMatches(name, Types(types)).size();
}

TEST(VQLFunctionTable, TakesTheExactSignature) {
    struct {
        const wchar_t* name;
        const char* types;
        const char* resolved;
    } const cases[] = {
        {L"count", "", "countstar I  aggregate"},
        {L"count", "S", "count I S aggregate"},
        {L"sum", "u", "sum u u aggregate"},
        {L"max", "d", "max d d aggregate"},
        {L"max", "SS", "greatest S SS"},
        {L"anyif", "SB", "anyif S SB aggregate"},
        {L"quantile", "dI", "quantile t dI aggregate"},
        {L"quantile", "ID", "quantile D ID aggregate"},
        {L"=", "tu", "eq B tu"},
        {L"<=", "BB", "le B BB"},
        {L"isdistinct", "SS", "isdistinct B SS"},
        {L"+", "SS", "concat S SS"},
        {L"+", "dI", "plus d dI"},
        {L"-", "u", "negate u u"},
        {L"-", "tt", "minus D tt"},
        {L"-", "dd", "minus I dd"},
        {L"*", "Du", "times u Du"},
        {L"%", "II", "mod I II"},
        {L"abs", "I", "abs_ I I"},
        {L"log", "DD", "log D DD"},
        {L"round", "ID", "round2 I ID"},
        {L"square", "I", "square I I"},
        {L"truncmonth", "t", "truncmonth d t"},
        {L"truncday", "u", "truncday u u"},
        {L"trunctime", "dI", "trunctime t dI"},
        {L"addmonth", "dI", "addmonth d dI"},
        {L"addday", "uI", "addday u uI"},
        {L"diffday", "uu", "diffday I uu"},
        {L"find", "SS", "find2 I SS"},
        {L"find", "SSD", "find3 I SSD"},
        {L"char", "D", "chr S D"},
        {L"to_date", "S", "to_date d S"},
        {L"cast", "uS", "cast u uS"},
        {L"hash", "B", "hash I B"},
        {L"and", "BB", "and_ B BB"},
    };
    for (const auto& c : cases) EXPECT_EQ(Resolved(c.name, c.types), c.resolved) << narrow(c.name);
}

TEST(VQLFunctionTable, PromotesOnlyWhereNothingElseFits) {
    EXPECT_EQ(Resolved(L"+", "ID"), "plus D DD");
    EXPECT_EQ(Resolved(L"/", "II"), "divide D DD");
    EXPECT_EQ(Resolved(L"sqrt", "I"), "sqrt D D");
    EXPECT_EQ(Resolved(L"year", "d"), "year I t");
    EXPECT_EQ(Resolved(L"=", "dt"), "eq B tt");
    EXPECT_EQ(Resolved(L"*", "uI"), "times u uD");
    EXPECT_EQ(Resolved(L"covar", "ID"), "covar D DD aggregate");
    // Nothing is ever narrowed.
    EXPECT_EQ(ResolveError(L"%", "DD"), (RaisedError{48032, "no such function (% double double)"}));
    EXPECT_EQ(ResolveError(L"to_date", "u"), (RaisedError{48032, "no such function (to_date duration)"}));
}

TEST(VQLFunctionTable, NamesTheCallInErrors) {
    EXPECT_EQ(ResolveError(L"frobnicate", "I?"), (RaisedError{48032, "no such function (frobnicate integer unknown)"}));
    EXPECT_EQ(ResolveError(L"and", "B"), (RaisedError{48032, "no such function (and boolean)"}));
    EXPECT_EQ(ResolveError(L"+", "??").text, "ambiguous function call (+ unknown unknown), 7 possible resolutions");
    EXPECT_EQ(ResolveError(L"+", "??").code, 48030);
    EXPECT_EQ(narrow(VQLFunctionTable::Signature(L"f", {VQLDataType::spatial, VQLDataType::boolean})), "f ??? boolean");
}

TEST(VQLFunctionTable, LetsANullTakeTheTypeOfWhatItStandsBeside) {
    EXPECT_EQ(Resolved(L"=", "?I"), "eq B II");
    EXPECT_EQ(Resolved(L"*", "D?"), "times D DD");
    EXPECT_EQ(Resolved(L"+", "?I"), "plus I II");
    EXPECT_EQ(Resolved(L"-", "t?"), "minus D tt");
    EXPECT_EQ(Resolved(L">", "?t"), "gt B tt");
}

TEST(VQLFunctionTable, LeavesTheChoiceOpenWhereNothingDecides) {
    // One operation over all types.
    EXPECT_EQ(MatchCount(L"=", "??"), 9u);
    EXPECT_EQ(MatchCount(L"isnull", "?"), 7u);
    // The known types are strings, and no signature is of strings throughout.
    EXPECT_EQ(MatchCount(L"find", "SS?"), 2u);
}

TEST(VQLFunctionTable, FindsTheTypeOfACase) {
    const auto caseType = [](const char* types) {
        return Letter(VQLFunctionTable::ResolveCaseType(Types(types), VQLDataType::date));
    };
    EXPECT_EQ(caseType("ID?"), 'D');
    EXPECT_EQ(caseType("DI"), 'D');
    EXPECT_EQ(caseType("?dt"), 't');
    EXPECT_EQ(caseType("td"), 't');
    EXPECT_EQ(caseType("S?"), 'S');
    EXPECT_EQ(caseType("??"), '?');
    EXPECT_EQ(caseType(""), 'd');
    EXPECT_EQ(Raised([&] { caseType("SI"); }),
              (RaisedError{48031, "mismatched case result types (case string integer)"}));
    EXPECT_EQ(Raised([&] { caseType("tD"); }).code, 48031);
}

TEST(CreateFunctions, RefusesAFunctionWithoutResult) {
    VQLFunctionTable table;
    EXPECT_EQ(Raised([&] { CreateFunctions{table}.Func({}, L"f", L"f"); }).text, "return type cannot be null");
    EXPECT_TRUE(table.GetEntries().empty());
}

}  // namespace
}  // namespace qve
