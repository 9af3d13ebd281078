#include <gtest/gtest.h>

#include "algebra/Exp.h"
#include "algebra/plan/FormatExp.h"
#include "algebra/plan/ParseNamespace.h"
#include "storage/Database.h"
#include "system/VQLException.h"
#include "system/unicode.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

using ContextType = ParseNamespace::ContextType;

RefCntPtr<Namespace> Sample() {
    return TableOf({ColumnOf(L"long", L"a", {"1", "2", "NULL"}), ColumnOf(L"double", L"b", {"0.5", "1.5", "2.5"}),
                    ColumnOf(L"text", L"s", {"x", "y", "x"}), ColumnOf(L"bit", L"t", {"1", "0", "1"})});
}

// What is written is what was read, and means the same.
TEST(PlanText, ReadsExpressionsAsItWritesThem) {
    const struct {
        ContextType context;
        const wchar_t* text;
    } cases[] = {
        {ContextType::map, L"[a]"},
        {ContextType::map, L"12"},
        {ContextType::map, L"-0.125"},
        {ContextType::map, L"1e+300"},
        {ContextType::map, L"true"},
        {ContextType::map, L"\"a \\\"quoted\\\" text\""},
        {ContextType::map, L"#2001-02-03#"},
        {ContextType::map, L"#2001-02-03 04:05:06.0700#"},
        {ContextType::map, L"#-1:02:03:04#"},
        {ContextType::map, L"(7 ((\"type\" \"short\")))"},
        {ContextType::map, L"(null ((\"type\" \"double\")))"},
        {ContextType::map, L"(values 1 2 3)"},
        {ContextType::map, L"(plus [a] (times [b] 2.0))"},
        {ContextType::map, L"(case [t] [a] 3)"},
        {ContextType::map, L"(cast [a] (null ((\"type\" \"double\"))))"},
        {ContextType::map, L"(or_ [t] (and_ [t] (eq [a] 1)))"},
        {ContextType::select, L"(and_ (lt [a] 2) (map (eq [s] \"x\")) [t])"},
        {ContextType::select, L"(or_ (lt [a] 2) (isnull [b]))"},
        {ContextType::select, L"(or_ (and_ (lt [a] 2) [t]) (map (eq [s] \"x\")))"},
        {ContextType::map, L"(expand (compress [b]))"},
        {ContextType::map, L"(partition [a] [s])"},
        {ContextType::map, L"(hashes (hash values [a]) (rehash tokens [s]))"},
        {ContextType::map,
         L"(lookup ([a] [s]) ((null ((\"type\" \"long\"))) (null ((\"type\" \"varchar\")))) "
         L"\"none\" (1 \"x\" \"one\") ((null ((\"type\" \"long\"))) "
         L"\"y\" \"two\"))"},
        {ContextType::aggregate, L"(countstar)"},
        {ContextType::aggregate, L"(anyif [a] [t])"},
        {ContextType::aggregate, L"(quantile [b] 0.5)"},
        {ContextType::aggregate, L"(countd [s])"},
        {ContextType::aggregate, L"(collect [s])"},
        {ContextType::aggregate, L"(corr [b] [b])"},
    };
    const auto input = Sample();
    for (const auto& test : cases) {
        const RefCntPtr<Exp> exp = ParseNamespace()(test.context, test.text, input);
        EXPECT_EQ(narrow(FormatExp::Do(test.context, exp)), narrow(test.text));
    }
}

TEST(PlanText, RefusesWhatIsNoPlan) {
    const struct {
        const wchar_t* text;
        int code;
        const char* message;
    } cases[] = {
        {L"", 49014, "expected single query"},
        {L"(scan) (scan)", 49014, "expected single query"},
        {L"12", 49012, "expected list"},
        {L"()", 49012, "empty operator"},
        {L"(12 13)", 49012, "expected symbol"},
        {L"(frob [a])", 49012, "unknown operator (frob)"},
        {L"(join inner)", 49012, "Wrong number of arguments"},
        {L"(table [a] ())", 49012, "Identifier is not a table name"},
        {L"(table [a].[b] ())", 49012, "No database specified"},
        {L"(select [a])", 49012, "Wrong number of arguments"},
        {L"(flowtable somehow (table [a].[b] ()))", 49012, "unknown access"},
        {L"(text 5 () () ())", 49012, "expected literal"},
        {L"(clustering-flow 1)", 49012, "Wrong number of arguments"},
        {L"(compact)", 49012, "Wrong number of arguments"},
        {L"(shared (scan) (scan))", 49012, "Wrong number of arguments"},
        {L"(dict (table [a].[b] ()))", 49012, "Wrong number of arguments"},
        {L"(partition-split [a])", 49012, "Wrong number of arguments"},
        {L"(partition-restart (scan ()) (scan ()))", 49012, "Wrong number of arguments"},
        {L"(update (([a] [b])))", 49012, "Wrong number of arguments"},
        {L"(fraction 1 (table [a].[b] ()))", 49012, "Wrong number of arguments"},
    };
    for (const auto& test : cases) {
        try {
            ParseNamespace()(test.text, nullptr);
            ADD_FAILURE() << narrow(test.text) << " is read";
        } catch (const VQLParseException& error) {
            EXPECT_EQ(error.GetErrorCode(), test.code) << narrow(test.text);
            EXPECT_EQ(error.GetWhatA(), test.message) << narrow(test.text);
        }
    }
}

TEST(PlanText, RefusesWhatIsNoExpression) {
    const struct {
        ContextType context;
        const wchar_t* text;
        const char* message;
    } cases[] = {
        {ContextType::map, L"1 2", "expected single expression"},
        {ContextType::map, L"()", "empty function call"},
        {ContextType::map, L"([a] 1)", "missing function name"},
        {ContextType::map, L"[a].[b]", "composite identifier in expression"},
        {ContextType::map, L"(frob [a])", "unknown function (frob)"},
        {ContextType::map, L"(sum [a])", "unknown function (sum)"},
        {ContextType::aggregate, L"(plus [a] 1)", "unknown function (plus)"},
        {ContextType::map, L"(case [t])", "wrong number of arguments to case"},
        {ContextType::map, L"(cast [a])", "wrong number of arguments to cast"},
        {ContextType::map, L"(data)", "wrong number of arguments to data"},
        {ContextType::map, L"(null)", "invalid null"},
        {ContextType::map, L"(plus [a] [b] [a] [b])", "missing argument"},
        {ContextType::aggregate, L"(quantile [b])", "missing argument"},
        {ContextType::aggregate, L"(covar [b])", "missing argument"},
        {ContextType::map, L"(values [a])", "expected literal"},
        {ContextType::map, L"(7 8 9)", "unsupported literal type"},
        {ContextType::map, L"(compress [a] [b])", "missing argument"},
        {ContextType::map, L"(hashes (rehash values [a]))", "unknown function (rehash)"},
        {ContextType::map, L"(lookup ([a]) (0) 0)", "lookup takes at least 4 arguments"},
        {ContextType::map, L"(lookup () () 0 (0))", "VisitLookup: missing input"},
        {ContextType::map, L"(lookup ([a]) (0) 0 (1 2) (1))", "VisitLookup: table not rectangular"},
        {ContextType::map, L"(lookup ([a]) (0) 0 (1 [b]))", "expected literal"},
    };
    const auto input = Sample();
    for (const auto& test : cases) {
        try {
            ParseNamespace()(test.context, test.text, input);
            ADD_FAILURE() << narrow(test.text) << " is read";
        } catch (const VQLParseException& error) {
            EXPECT_EQ(error.GetWhatA(), test.message) << narrow(test.text);
        }
    }
}

}  // namespace
}  // namespace qve
