#include "vql/VQLQueryParser.h"

#include <gtest/gtest.h>

#include "system/QuillonException.h"
#include "tests/vql/raised_error.h"
#include "tests/vql/syntax_text.h"
#include "types/types_initialization.h"
#include "types/usrtype.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLQueries.h"
#include "vql/syntax/VQLParser.h"

namespace qve {
namespace {

using test::Raised;
using test::RaisedError;
using test::SyntaxText;

class VQLQueryParserTest : public testing::Test {
protected:
    static void SetUpTestSuite() { types_initialization(); }

    /// Builds a query; Q stands for (table [t]).
    RefCntPtr<VQLQuery> Build(const std::wstring& text) { return m_text.Query(Expand(text)); }
    template <class T>
    RefCntPtr<T> BuildAs(const std::wstring& text) {
        return DynamicPtrCast<T>(Build(text));
    }
    RaisedError Error(const std::wstring& text) {
        return Raised([&] { m_text.Query(text); });
    }
    /// The message, with Q expanded.
    std::string Message(const std::wstring& text) {
        const RaisedError error = Error(Expand(text));
        EXPECT_EQ(error.code, 49039) << narrow(text);
        return error.text;
    }
    static std::wstring Expand(const std::wstring& text) {
        std::wstring expanded;
        for (const wchar_t c : text) expanded += c == L'Q' ? std::wstring(L"(table [t])") : std::wstring(1, c);
        return expanded;
    }

    SyntaxText m_text;
};

TEST_F(VQLQueryParserTest, EveryFormPrintsAsItWasWritten) {
    for (const wchar_t* text : {
             L"(table [s].[t])",
             L"(table [t] \"/db\" (([a] [b]) ([c] [d])))",
             L"(table [t] (([a] [b])))",
             L"(domain [s].[t].[c])",
             L"(domain [t].[c] \"/db\")",
             L"(select (table [t]) (> [x] 1))",
             L"(project (table [t]) (([a] [a]) ([b] (+ [a] 1))))",
             L"(project (table [t]) (([x] \"s\" ((\"collation\" \"en_US\")))))",
             L"(restrict (table [t]) ([a] [b]))",
             L"(pivot (table [t]) ([tag] ([x] [y])) (([v] ([a] [b])) ([w] ([c] [d]))))",
             L"(pivot (table [t]) ([tag] ([x])) (([v] ([a]))) ((\"collation\" \"de\")))",
             L"(aggregate (table [t]) (([g] [g])) (([n] (count))))",
             L"(aggregate (table [t]) () ())",
             L"(order (table [t]) (([a] asc) ((- [b]) desc [rank])))",
             L"(top (table [t]) (([a] desc)) 10)",
             L"(join (table [l]) (table [r]) (([a] [b])) (([c] [c])))",
             L"(leftjoin (table [l]) (table [r]) () () islookup)",
             L"(rightjoin (table [l]) (table [r]) (((+ [a] 1) [b])) () isnotdistinct)",
             L"(fulljoin (table [l]) (table [r]) () ())",
             L"(text \"/f.csv\")",
             L"(text \"/f.csv\" (((\"name\" \"a\") (\"type\" \"long\"))) ((\"field-delimiter\" \";\")))",
             L"(indextable [s].[t] [c])",
             L"(indexjoin (table [t]) (indextable [t] [c]) (([c] [c])) [c.START] [c.COUNT])",
             L"(exchange (table [t]) 4)",
             L"(append (table [a]) (table [b]) () (table [c]) (([x] [y])))",
         })
        EXPECT_EQ(SyntaxText::Text(Build(text)), text);
}

TEST_F(VQLQueryParserTest, NamesStandForThemselvesInBindings) {
    const auto query = BuildAs<VQLProjectQuery>(L"(project Q ([a] ([b] a)))");
    EXPECT_EQ(SyntaxText::Text(query), L"(project (table [t]) (([a] [a]) ([b] [a])))");
    EXPECT_EQ(query->GetBindings()[0].second->GetPosition(), VQLPosition(0, 22));
}

TEST_F(VQLQueryParserTest, TellsTheOptionalPartsOfATableApart) {
    const auto query = BuildAs<VQLTableQuery>(L"(table [t] (([a] [b]) 5 ([a] [c])))");
    EXPECT_EQ(query->GetDatabasePath(), L"");
    // What is no pair is passed over; the later target of one name stays.
    EXPECT_EQ(query->GetColumnMap().Map(m_text.Name(L"[a]")).AsString(), L"[c]");
    EXPECT_EQ(query->GetParallelism(), 1u);
    EXPECT_EQ(Message(L"(table [t] (([a] [b])) \"db\")"), "expected literal");
    EXPECT_EQ(Message(L"(table [t] ((a [b])))"), "expected identifier");
    EXPECT_EQ(Message(L"(table [t] (([a])))"), "wrong number of arguments to column mapping");
    EXPECT_EQ(Message(L"(table [t] [b])"), "expected list");
    EXPECT_EQ(Message(L"(domain [t])"), "domain argument should be [table].[column]");
}

TEST_F(VQLQueryParserTest, ReadsTheFlagOfAJoin) {
    const auto plain = BuildAs<VQLJoinQuery>(L"(join Q Q () ())");
    EXPECT_TRUE(plain->UseEqualToComparison() && !plain->IsLookup());
    const auto lookup = BuildAs<VQLJoinQuery>(L"(leftjoin Q Q () () islookup)");
    EXPECT_TRUE(!lookup->UseEqualToComparison() && lookup->IsLookup());
    EXPECT_EQ(lookup->GetJoinType(), VQLJoinType::left);
    const auto notDistinct = BuildAs<VQLJoinQuery>(L"(fulljoin Q Q () () isnotdistinct)");
    EXPECT_TRUE(!notDistinct->UseEqualToComparison() && !notDistinct->IsLookup());
    EXPECT_EQ(Message(L"(join Q Q (([a] [b])) () maybe)"), "wrong join flag");
}

TEST_F(VQLQueryParserTest, NamesTheDerivedColumnsOfAnIndexTable) {
    const auto query = BuildAs<VQLIndexTableQuery>(L"(indextable [s].[t] [c])");
    EXPECT_EQ(query->GetStartColumnName().AsString(), L"[c.START]");
    EXPECT_EQ(query->GetCountColumnName().AsString(), L"[c.COUNT]");
}

TEST_F(VQLQueryParserTest, CountsArguments) {
    struct {
        const wchar_t* text;
        const char* form;
    } const cases[] = {
        {L"(table)", "table"},
        {L"(table [a] \"b\" () ())", "table"},
        {L"(domain)", "domain"},
        {L"(select Q)", "select"},
        {L"(project Q () ())", "project"},
        {L"(restrict Q)", "restrict"},
        {L"(pivot Q ([t] ([a])))", "pivot"},
        {L"(aggregate Q ())", "aggregate"},
        {L"(order Q)", "order"},
        {L"(top Q ())", "top"},
        {L"(join Q Q ())", "join"},
        {L"(fulljoin Q Q () () islookup 1)", "join"},
        {L"(text)", "text"},
        {L"(indextable [t])", "table"},
        {L"(indexjoin Q Q () [s])", "join"},
        {L"(exchange Q)", "exchange"},
        {L"(append Q Q)", "append"},
        {L"(append Q)", "append"},
        {L"(append Q Q () Q)", "append"},
    };
    for (const auto& c : cases) EXPECT_EQ(Message(c.text), std::string("wrong number of arguments to ") + c.form);
    // At the form, not at an argument.
    EXPECT_EQ(Error(L"(select\n (select (table [t])) true)"),
              (RaisedError{49039, "wrong number of arguments to select", 1, 1}));
}

TEST_F(VQLQueryParserTest, RaisesAtTheOffendingNode) {
    EXPECT_EQ(Error(L"(a)(b)"), (RaisedError{49040, "expected single query", 0, 0}));
    EXPECT_EQ(Error(L""), (RaisedError{49040, "expected single query", 0, 0}));
    EXPECT_EQ(Error(L" 5"), (RaisedError{49039, "expected list", 0, 1}));
    EXPECT_EQ(Error(L" ()"), (RaisedError{49039, "empty list", 0, 1}));
    EXPECT_EQ(Error(L"([a])"), (RaisedError{49039, "expected symbol", 0, 1}));
    EXPECT_EQ(Error(L"(frob [a])"), (RaisedError{49039, "unknown operator (frob)", 0, 1}));
    EXPECT_EQ(Error(L"(Select (table [t]) true)"), (RaisedError{49039, "unknown operator (Select)", 0, 1}));
    EXPECT_EQ(Error(L"(select (table t) true)"), (RaisedError{49039, "expected identifier", 0, 15}));
    EXPECT_EQ(Error(L"(transform ((text [a] \"f\")))"),
              (RaisedError{49039, "operator not supported (transform)", 0, 0}));
    EXPECT_EQ(Error(L"(remotequery [a] ())"), (RaisedError{49039, "operator not supported (remotequery)", 0, 0}));
    // What is wrong in an expression is the expression builder's fault.
    EXPECT_EQ(Error(L"(select (table [t]) ())"), (RaisedError{49020, "empty list", 0, 20}));
}

TEST_F(VQLQueryParserTest, ChecksTheShapeOfEachPart) {
    struct {
        const wchar_t* text;
        const char* message;
    } const cases[] = {
        {L"(restrict Q [a])", "expected list"},
        {L"(restrict Q (a))", "expected identifier"},
        {L"(project Q [a])", "expected list"},
        {L"(project Q (a))", "expected identifier"},
        {L"(project Q (([a])))", "wrong number of arguments to binding"},
        {L"(project Q (([a] 1 () 2)))", "wrong number of arguments to binding"},
        {L"(project Q ((a 1)))", "expected identifier"},
        {L"(project Q (([a] \"s\" ())))", "only the collation property is allowed in the property list"},
        {L"(project Q (([a] \"s\" ((size \"4\")))))", "only the collation property is allowed in the property list"},
        {L"(project Q (([a] [b] ((collation \"de\")))))", "the collation property can be set only to string literals"},
        {L"(project Q (([a] 5 ((collation \"de\")))))", "the collation property can be set only to string literals"},
        {L"(project Q (([a] \"s\" collation)))", "expected property list"},
        {L"(project Q (([a] \"s\" (collation))))", "expected property pair"},
        {L"(project Q (([a] \"s\" ((collation)))))", "Invalid property pair"},
        {L"(project Q (([a] \"s\" ((collation 5)))))", "property literal is not a string"},
        {L"(project Q (([a] \"s\" ((collation [de])))))", "Invalid property token"},
        {L"(order Q ([a]))", "expected list"},
        {L"(order Q (([a])))", "wrong number of arguments for order"},
        {L"(order Q (([a] up)))", "expected 'asc' or 'desc'"},
        {L"(order Q (([a] \"asc\")))", "expected 'asc' or 'desc'"},
        {L"(order Q (([a] asc rank)))", "expected identifier"},
        {L"(top Q (([a] asc)) 1.5)", "expected integer constant"},
        {L"(top Q (([a] asc)) n)", "expected literal"},
        {L"(top Q (([a] asc)) 3000000000)", "expected integer constant"},
        {L"(exchange Q -1)", "expected integer constant"},
        {L"(join Q Q [a] ())", "expected list"},
        {L"(join Q Q ([a]) ())", "expected list"},
        {L"(join Q Q (([a])) ())", "wrong number of arguments to join condition"},
        {L"(join Q Q () () [islookup])", "expected symbol"},
        {L"(pivot Q ([t]) ())", "wrong number of arguments to pivot group"},
        {L"(pivot Q ([t] ()) ())", "pivot group is empty"},
        {L"(pivot Q ([t] ([a])) [b])", "expected list"},
        {L"(pivot Q ([t] ([a] [b])) (([v] ([c]))))", "pivot group has the wrong number of members"},
        {L"(text [f])", "expected literal"},
        {L"(text 5)", "path argument of text is not a string"},
        {L"(text \"f\" 5)", "schema argument of text is not a list"},
        {L"(text \"f\" (5))", "expected property list"},
        {L"(text \"f\" () 5)", "text properties argument of text is not a list"},
        {L"(append Q Q 5)", "expected list"},
        {L"(append Q Q (5))", "expected list"},
        {L"(append Q Q (([a])))", "wrong number of arguments in a rename -- should be 2"},
    };
    for (const auto& c : cases) EXPECT_EQ(Message(c.text), c.message) << narrow(c.text);
}

TEST_F(VQLQueryParserTest, BuildsBindingsAlone) {
    const auto node = VQLParser::ParseAndReturnFirstNode(m_text.dictionary, L"([a] ([b] 1))", false,
                                                         [](RefCntPtr<VQLNode>) { FAIL(); });
    const VQLBindings bindings = VQLQueryParser(m_text.dictionary).ParseBindings(node);
    ASSERT_EQ(bindings.size(), 2u);
    EXPECT_EQ(bindings[1].first.AsString(), L"[b]");
}

TEST_F(VQLQueryParserTest, BuildsExpressions) {
    const auto text = [&](const wchar_t* expression) { return FormatExpression(m_text.Expression(expression)); };
    for (const wchar_t* same :
         {L"(+ [a] (f))", L"(case [p] 1 2)", L"null", L"[null]", L"(frobnicate 1)", L"\"a\\\"\\n\""})
        EXPECT_EQ(text(same), same);
    EXPECT_EQ(text(L"plain"), L"[plain]");
    EXPECT_EQ(text(L"(iif p 1 2)"), L"(case [p] 1 2)");

    const auto null = DynamicPtrCast<VQLLiteralExpression>(m_text.Expression(L"null"));
    EXPECT_EQ(null->GetLiteral().GetType(), VQLDataType::unknown);
    EXPECT_TRUE(null->GetLiteral().IsNull());

    const auto cast =
        DynamicPtrCast<VQLFuncallExpression>(m_text.Expression(L"(cast ((factory builtin) (builtin date)) [x])"));
    EXPECT_EQ(cast->GetName(), L"cast");
    const auto target = DynamicPtrCast<VQLLiteralExpression>(cast->GetArguments()[0]);
    EXPECT_EQ(target->GetType()->name(), L"date");
    EXPECT_EQ(target->GetLiteral().GetType(), VQLDataType::date);
    EXPECT_EQ(text(L"(cast ((factory builtin) (builtin date)) [x])"),
              L"(cast ((\"builtin\" \"date\") (\"factory\" \"builtin\")) [x])");
}

TEST_F(VQLQueryParserTest, RefusesMalformedExpressions) {
    const auto error = [&](const wchar_t* text) { return Raised([&] { m_text.Expression(text); }); };
    EXPECT_EQ(error(L"a b"), (RaisedError{49021, "expected single expression", 0, 0}));
    EXPECT_EQ(error(L""), (RaisedError{49021, "expected single expression", 0, 0}));
    EXPECT_EQ(error(L"(+ 1 ())"), (RaisedError{49020, "empty list", 0, 5}));
    EXPECT_EQ(error(L"(+ 1 (\"f\"))"), (RaisedError{49020, "expected symbol", 0, 6}));
    EXPECT_EQ(error(L"(+ 1 (case a b))"), (RaisedError{49020, "wrong number of arguments to case", 0, 5}));
    EXPECT_EQ(error(L"(iif a b c d)"), (RaisedError{49020, "wrong number of arguments to case", 0, 0}));
    EXPECT_EQ(error(L"(cast [x])"), (RaisedError{49020, "wrong number of arguments to cast", 0, 0}));
    EXPECT_EQ(error(L"(cast date [x])"), (RaisedError{49020, "expected property list", 0, 6}));
    EXPECT_EQ(error(L"(cast ((a 5)) [x])"), (RaisedError{49020, "property literal is not a string", 0, 10}));
    EXPECT_THROW(m_text.Expression(L"(cast ((factory builtin) (builtin frob)) [x])"), QuillonException);
}

TEST_F(VQLQueryParserTest, BuildsAsDeepAsTheParserAllows) {
    std::wstring deep = L"[a]";
    for (unsigned i = 0; i < VQLParser::maxDepth; ++i) deep = L"(- " + deep + L")";
    const auto expression = m_text.Expression(deep);
    EXPECT_EQ(FormatExpression(expression), deep);
    EXPECT_EQ(Raised([&] { m_text.Expression(L"(- " + deep + L")"); }).text, "query too large");
}

}  // namespace
}  // namespace qve
