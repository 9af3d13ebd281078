#include "optimizer/OptQueryCopier.h"

#include <gtest/gtest.h>

#include "optimizer/OptColumnDependencies.h"
#include "optimizer/OptScalarProperties.h"
#include "tests/vql/raised_error.h"
#include "tests/vql/syntax_text.h"
#include "vql/VQLExpressionMapper.h"

namespace qve {
namespace {

using test::Raised;
using test::RaisedError;
using test::SyntaxText;

TEST(OptQueryCopier, RebuildsInnerNodesAndSharesLeaves) {
    SyntaxText syntax;
    const auto query = syntax.Query(
        L"(append (top (order (select (table [t]) (> [x] 1)) (([a] asc))) (([b] desc)) 7) (leftjoin (project (exchange "
        L"(text "
        L"\"f\") 2) (([a] 1))) (aggregate (domain [t].[c]) (([a] [c])) (([n] (count)))) (([a] [a])) (([n] [n])) "
        L"islookup) (([a] "
        L"[b])) (indexjoin (pivot (table [p]) ([t] ([u])) (([w] ([a])))) (indextable [t] [c]) () [c.START] [c.COUNT]) "
        L"())");
    const auto copy = OptQueryCopier(syntax.dictionary)(query);
    EXPECT_EQ(FormatQuery(copy), FormatQuery(query));
    EXPECT_NE(copy, query);

    const auto leaf = [](const RefCntPtr<VQLQuery>& append) {
        RefCntPtr<VQLQuery> node = DynamicPtrCast<VQLAppendQuery>(append)->GetLeft();
        while (const auto unary = DynamicPtrCast<VQLUnaryQuery>(node)) node = unary->GetInput();
        return node;
    };
    EXPECT_EQ(leaf(copy), leaf(query));
}

TEST(OptQueryCopier, ExpectsNoRestrict) {
    SyntaxText syntax;
    const auto query = syntax.Query(L"(select (restrict (table [t]) ([a])) true)");
    EXPECT_EQ(Raised([&] { OptQueryCopier{syntax.dictionary}(query); }),
              (RaisedError{48016, "Restrict operator not expected"}));
}

/// Takes selects out.
class SelectRemover : public OptQueryCopier {
public:
    using OptQueryCopier::OptQueryCopier;
    RefCntPtr<VQLQuery> VisitSelect(const VQLSelectQuery& query) override { return Visit(query.GetInput()); }
};

TEST(OptQueryCopier, APassOverridesWhatItChanges) {
    SyntaxText syntax;
    const auto query = syntax.Query(L"(join (select (table [l]) true) (project (select (table [r]) true) ()) () ())");
    EXPECT_EQ(SyntaxText::Text(SelectRemover(syntax.dictionary)(query)),
              L"(join (table [l]) (project (table [r]) ()) () ())");
}

std::wstring Names(const VQLIdentifierSet& names) {
    std::wstring text;
    for (const VQLIdentifier& name : names) text += name.AsString();
    return text;
}

TEST(OptColumnDependencies, LooksAtTheNodeAlone) {
    SyntaxText syntax;
    const auto columns = [&](const wchar_t* text) { return Names(OptDeriveColumnDependencies(syntax.Query(text))); };
    EXPECT_EQ(columns(L"(table [t])"), L"");
    EXPECT_EQ(columns(L"(select (select (table [t]) [a]) true)"), L"");
    EXPECT_EQ(columns(L"(select (table [t]) (case [a] [b] (f [c] [a])))"), L"[a][b][c]");
    EXPECT_EQ(columns(L"(project (table [t]) (([x] [a]) [b]))"), L"[a][b]");
    EXPECT_EQ(columns(L"(restrict (table [t]) ([a] [b]))"), L"[a][b]");
    EXPECT_EQ(columns(L"(pivot (table [t]) ([tag] ([x])) (([g] ([a]))))"), L"[a][tag]");
    EXPECT_EQ(columns(L"(aggregate (table [t]) (([x] [a])) (([y] (sum [b]))))"), L"[a][b]");
    EXPECT_EQ(columns(L"(order (table [t]) (([a] asc [r]) ((- [b]) asc)))"), L"[a][b]");
    EXPECT_EQ(columns(L"(top (table [t]) (([a] asc)) 1)"), L"[a]");
    EXPECT_EQ(columns(L"(join (table [l]) (table [r]) (([a] [b])) (([x] [c])))"), L"[a][b][c]");
    EXPECT_EQ(columns(L"(indexjoin (table [l]) (table [r]) (([x] [a])) [s] [n])"), L"[a][n][s]");
    EXPECT_EQ(columns(L"(append (table [l]) (table [r]) (([a] [b])))"), L"[a]");
    const auto join =
        DynamicPtrCast<VQLJoinQuery>(syntax.Query(L"(join (table [l]) (table [r]) (([a] [b])) (([x] [c])))"));
    EXPECT_EQ(Names(OptDeriveJoinLeftColumnDependencies(*join)), L"[a]");
    EXPECT_EQ(Names(OptDeriveJoinRightColumnDependencies(*join)), L"[b][c]");
}

TEST(OptScalarProperties, FindsColumnsAndAggregates) {
    SyntaxText syntax;
    const auto expression = syntax.Expression(L"(+ [a] (case [b] 1 (sum [a])))");
    EXPECT_EQ(Names(OptDeriveScalarProperties(expression)->GetColumns()), L"[a][b]");
    EXPECT_FALSE(OptDeriveScalarProperties(expression)->HasAggregate());
    DynamicPtrCast<VQLFuncallExpression>(expression)
        ->GetArguments()[1]
        ->SetExpressionType(VQLExpressionType::aggregate);
    EXPECT_TRUE(OptDeriveScalarProperties(expression)->HasAggregate());
}

TEST(VQLExpressionMapper, PutsExpressionsForColumns) {
    SyntaxText syntax;
    const VQLExpressionMapper::Map map{{syntax.Name(L"[a]"), syntax.Expression(L"(- [a] [b])")}};
    VQLExpressionMapper mapper(syntax.dictionary, map);
    EXPECT_EQ(FormatExpression(mapper(syntax.Expression(L"(f [a] [b] (g [a]))"))),
              L"(f (- [a] [b]) [b] (g (- [a] [b])))");
}

}  // namespace
}  // namespace qve
