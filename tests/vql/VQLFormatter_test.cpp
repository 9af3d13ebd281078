#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "system/unicode.h"
#include "tests/vql/syntax_text.h"
#include "vql/VQLExpressionCloner.h"
#include "vql/VQLExpressionComparator.h"
#include "vql/VQLQueryCloner.h"
#include "vql/syntax/VQLLexer.h"

namespace qve {
namespace {

using test::SyntaxText;

TEST(VQLFormatter, ValuesReadBackAsThemselves) {
    const VQLDataValue values[] = {
        VQLDataValue(0),
        VQLDataValue(std::numeric_limits<long long>::min()),
        VQLDataValue(2.0),
        VQLDataValue(0.1),
        VQLDataValue(-1e300),
        VQLDataValue(5e-324),
        VQLDataValue(std::numeric_limits<double>::infinity()),
        VQLDataValue(-std::numeric_limits<double>::infinity()),
        VQLDataValue(true),
        VQLDataValue(L"tab\t quote\" back\\ line\n return\r \U0001F600"),
        VQLDataValue(L""),
        VQLDataValue(VQLDate{2001, 2, 3}),
        VQLDataValue(VQLDate{987, 1, 1}),
        VQLDataValue(VQLDatetime{2001, 2, 3, 4, 5, 6, 0}),
        VQLDataValue(VQLDatetime{2001, 2, 3, 0, 0, 0, 7}),
        VQLDataValue(VQLDuration{0, 0, 0, 0, 0}),
        VQLDataValue(VQLDuration{-5, -1, -2, -3, -4}),
        VQLDataValue(VQLDuration{0, 0, 0, 0, -1}),
        VQLDataValue(VQLDuration{12345, 23, 59, 59, 9999}),
    };
    for (const VQLDataValue& value : values) {
        const std::wstring text = FormatDataValue(value);
        const VQLDataValue again = VQLLexer::ParseLiteral(text.c_str(), {});
        EXPECT_EQ(again.GetType(), value.GetType()) << narrow(text);
        EXPECT_TRUE(again == value) << narrow(text);
    }
    EXPECT_EQ(FormatDataValue(VQLDataValue::Null(VQLDataType::date)), L"null");
}

const wchar_t* const queries[] = {
    L"(select (table [s].[t\\]] \"/d\" (([a] [b]))) (and (> [x] -2.5) (isnull null)))",
    L"(top (order (domain [s].[t].[c]) (([a] asc) ([b] desc [r]))) (((abs [a]) asc)) -3)",
    L"(aggregate (project (table [t]) (([x] (case [p] \"a\\nb\" \"\\\"\"))) ) (([x] [x])) (([n] (count)) ([m] (sum "
    L"[y]))))",
    L"(append (leftjoin (table [a]) (table [b]) (([x] [y])) (([z] (+ [z] #1:00:00#))) islookup) (text \"f\" () ((yes "
    L"\"y\"))) (([p] [q])))",
    L"(pivot (restrict (exchange (indexjoin (table [t]) (indextable [t] [c]) () [c.START] [c.COUNT]) 2) ([a] [b])) "
    L"([t] "
    L"([u] [v])) (([w] ([a] [b]))) ((collation de)))",
};

TEST(VQLFormatter, QueriesReadBackWithTheSameText) {
    for (const wchar_t* text : queries) {
        SyntaxText first, second;
        const std::wstring formatted = FormatQuery(first.Query(text));
        EXPECT_EQ(FormatQuery(second.Query(formatted)), formatted);
        EXPECT_NE(formatted.find(L"\n  ("), std::wstring::npos);
    }
}

TEST(VQLFormatter, AnnotatedTextCanStillBeRead) {
    for (const wchar_t* text : queries) {
        SyntaxText syntax;
        const auto query = syntax.Query(text);
        const auto columns = MakeRef<VQLColumnSpace>();
        columns->AddColumn(MakeRef<VQLColumn>(syntax.Name(L"[line\nfeed]"), VQLDataType::date));
        query->SetColumnSpace(columns);
        query->SetUniqueKeys({{syntax.Name(L"[a]"), syntax.Name(L"[b]")}});
        query->SetSortSpecsList({{{syntax.Name(L"[a]"), VQLSortSense::descending}}});
        query->SetEquivalences({{syntax.Name(L"[a]"), 3}});
        const std::wstring annotated = FormatQuery(query, true);
        EXPECT_NE(annotated.find(L"; columns=(([line feed] date))"), std::wstring::npos) << narrow(annotated);
        EXPECT_NE(annotated.find(L"; unique=(key=([a] [b]))"), std::wstring::npos);
        EXPECT_NE(annotated.find(L"; sorts=(sort=([a] Desc))"), std::wstring::npos);
        EXPECT_NE(annotated.find(L"; equivalence=([a] 3)"), std::wstring::npos);
        EXPECT_EQ(FormatQuery(syntax.Query(annotated)), FormatQuery(query));
    }
}

TEST(VQLFormatter, WritesScanColumnsAsAnnotation) {
    SyntaxText syntax;
    const auto table = MakeRef<VQLTableQuery>(VQLPosition(), syntax.Name(L"[t]"), std::wstring(), VQLColumnMap(),
                                              VQLIdentifierSet{syntax.Name(L"[b]"), syntax.Name(L"[a]")});
    EXPECT_NE(FormatQuery(table, true).find(L"; scan=([a] [b])"), std::wstring::npos);
    EXPECT_EQ(FormatQuery(table), L"(table [t])");
}

TEST(VQLQueryCloner, CopiesEveryForm) {
    for (const wchar_t* text : queries) {
        SyntaxText syntax;
        const auto query = syntax.Query(text);
        query->SetColumnSpace(MakeRef<VQLColumnSpace>());
        const auto clone = VQLQueryCloner(syntax.dictionary)(query);
        EXPECT_NE(clone, query);
        EXPECT_FALSE(clone->HasColumnSpace());
        EXPECT_EQ(clone->GetPosition(), query->GetPosition());
        EXPECT_EQ(FormatQuery(clone, true), FormatQuery(syntax.Query(text), true));
    }
    EXPECT_EQ(SyntaxText().Query(L"(table [t])")->GetPosition(), VQLPosition());
}

TEST(VQLQueryCloner, KeepsWhatNoTextShows) {
    SyntaxText syntax;
    const VQLIdentifier name = syntax.Name(L"[a]");
    const auto aggregate = MakeRef<VQLAggregateQuery>(
        VQLPosition(1, 2),
        MakeRef<VQLTableQuery>(VQLPosition(), syntax.Name(L"[t]"), std::wstring(), VQLColumnMap(),
                               VQLIdentifierSet{name}, 4, VQLIdentifierSet{name}),
        VQLBindings(), VQLBindings(), true);
    const auto clone = DynamicPtrCast<VQLAggregateQuery>(VQLQueryCloner(syntax.dictionary)(aggregate));
    EXPECT_TRUE(clone->IsOrdered());
    const auto table = DynamicPtrCast<VQLTableQuery>(clone->GetInput());
    EXPECT_EQ(table->GetScanColumns(), VQLIdentifierSet{name});
    EXPECT_EQ(table->GetParallelism(), 4u);
    EXPECT_EQ(table->GetClusterNames(), VQLIdentifierSet{name});
}

/// Adds 1 to every integer and takes the inputs of selects in place of selects.
class Shifter : public VQLExpressionCloner {
public:
    using VQLExpressionCloner::VQLExpressionCloner;
    RefCntPtr<VQLExpression> VisitLiteral(const VQLLiteralExpression& expression) override {
        if (expression.GetLiteral().GetType() != VQLDataType::integer)
            return VQLExpressionCloner::VisitLiteral(expression);
        return MakeRef<VQLLiteralExpression>(expression.GetPosition(),
                                             VQLDataValue(expression.GetLiteral().GetInteger() + 1));
    }
};

class Rewriter : public VQLQueryCloner {
public:
    using VQLQueryCloner::Clone;
    using VQLQueryCloner::VQLQueryCloner;
    RefCntPtr<VQLQuery> VisitSelect(const VQLSelectQuery& query) override { return Clone(query.GetInput()); }
    RefCntPtr<VQLExpression> Clone(const RefCntPtr<VQLExpression>& expression) override {
        return Shifter(GetDictionary())(expression);
    }
};

TEST(VQLQueryCloner, ReachesEveryChildThroughItsOverrides) {
    SyntaxText syntax;
    const auto query = syntax.Query(
        L"(append (top (order (select (table [t]) 1) ((1 asc))) (((f 1) asc)) 1) (join (project (select (table [t]) 1) "
        L"(([a] "
        L"(case 1 1 1)))) (aggregate (table [t]) (([a] 1)) (([b] 1))) ((1 1)) (([c] 1))) ())");
    EXPECT_EQ(
        SyntaxText::Text(Rewriter(syntax.dictionary)(query)),
        L"(append (top (order (table [t]) ((2 asc))) (((f 2) asc)) 1) (join (project (table [t]) (([a] (case 2 2 2)))) "
        L"(aggregate (table [t]) (([a] 2)) (([b] 2))) ((2 2)) (([c] 2))) ())");
}

TEST(VQLExpressionComparator, OrdersByKindThenContent) {
    SyntaxText syntax;
    const wchar_t* const ordered[] = {L"null",
                                      L"1",
                                      L"2",
                                      L"2.0",
                                      L"\"a\"",
                                      L"[a]",
                                      L"[b]",
                                      L"(f)",
                                      L"(f [a])",
                                      L"(f [b])",
                                      L"(f [a] [b])",
                                      L"(g)",
                                      L"(case [a] 1 2)",
                                      L"(case [a] 1 [a] 2 3)"};
    VQLExpressionComparator compare;
    for (size_t i = 0; i < std::size(ordered); ++i)
        for (size_t j = 0; j < std::size(ordered); ++j)
            EXPECT_EQ(compare(syntax.Expression(ordered[i]), syntax.Expression(ordered[j])), (i > j) - (i < j))
                << narrow(ordered[i]) << " and " << narrow(ordered[j]);
    const auto a = syntax.Expression(L"(+ [a] 1)");
    const auto b = syntax.Expression(L"  (+ [a] 1)");
    b->SetDataType(VQLDataType::integer);
    EXPECT_EQ(compare(a, b), 0);
    const auto german = VQLExpressionParser()(L"\"a\"", syntax.dictionary, {{usrpropkey::collation, L"de"}});
    EXPECT_NE(compare(german, syntax.Expression(L"\"a\"")), 0);
}

TEST(VQLFormatter, IndentsOrKeepsToOneLine) {
    std::wostringstream indented, line;
    for (auto [stream, mode] :
         {std::pair(&indented, VQLFormatter::Mode::indented), {&line, VQLFormatter::Mode::line}}) {
        VQLFormatter formatter(*stream, mode);
        const VQLFormatter::Scope outer(formatter, L"a");
        formatter.Output(L"b");
        const VQLFormatter::Scope inner(formatter, L"c");
        formatter.Comment(L"two\nlines");
    }
    EXPECT_EQ(indented.str(), L"(a b\n  (c ; two lines\n    ))");
    EXPECT_EQ(line.str(), L"(a b (c ; two lines\n    ))");
}

}  // namespace
}  // namespace qve
