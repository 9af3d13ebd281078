#include "vql/VQLQueryChecker.h"

#include <gtest/gtest.h>

#include "tests/vql/raised_error.h"
#include "tests/vql/syntax_text.h"
#include "types/types_initialization.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLPushDownNullTypes.h"
#include "vql/VQLQueries.h"

namespace qve {
namespace {

using test::Raised;
using test::RaisedError;
using test::SyntaxText;

/// Checks queries over two tables: [t] (id, i, j integer; d double; s string; b boolean; day date; at datetime; span
/// duration; c compressed) and [u] (id unique; x integer; e double).
class VQLQueryCheckerTest : public testing::Test {
protected:
    static void SetUpTestSuite() { types_initialization(); }

    void SetUp() override {
        AddTable(L"[t]",
                 {{L"i", VQLDataType::integer, {}},
                  {L"j", VQLDataType::integer, {{usrpropkey::sort_position, L"1"}, {usrpropkey::sort_sense, L"desc"}}},
                  {L"id", VQLDataType::integer, {{usrpropkey::unique, L"true"}, {usrpropkey::ordered, L"asc"}}},
                  {L"d", VQLDataType::double_, {}},
                  {L"s", VQLDataType::string, {{usrpropkey::collation, L"de"}}},
                  {L"b", VQLDataType::boolean, {}},
                  {L"day", VQLDataType::date, {{usrpropkey::primary_key, L"2"}}},
                  {L"at", VQLDataType::datetime, {{usrpropkey::primary_key, L"1"}}},
                  {L"span", VQLDataType::duration, {}},
                  {L"c",
                   VQLDataType::string,
                   {{usrpropkey::compression, L"heap"},
                    {usrpropkey::sort_position, L"0"},
                    {usrpropkey::sort_sense, L"asc"}}}});
        AddTable(L"[u]", {{L"id", VQLDataType::integer, {{usrpropkey::unique, L"true"}}},
                          {L"x", VQLDataType::integer, {}},
                          {L"e", VQLDataType::double_, {}}});
        m_family.AddTableSpace(m_tables, L"");
    }

    struct ColumnSpec {
        const wchar_t* name;
        VQLDataType type;
        usrprops properties;
    };
    void AddTable(const wchar_t* name, std::vector<ColumnSpec> specs) {
        VQLColumnSpace::Columns columns;
        for (ColumnSpec& spec : specs)
            columns.push_back(MakeRef<VQLColumn>(VQLIdentifier::Unquoted(spec.name, m_text.dictionary), spec.type,
                                                 std::move(spec.properties)));
        const VQLIdentifier table = m_text.Name(name);
        m_tables[table] = MakeRef<VQLTable>(table, MakeRef<VQLColumnSpace>(std::move(columns)));
    }

    RefCntPtr<VQLQuery> Check(const std::wstring& text) {
        const RefCntPtr<VQLQuery> query = m_text.Query(text);
        VQLQueryChecker{m_family}(query);
        return query;
    }
    RaisedError Error(const std::wstring& text) {
        return Raised([&] { Check(text); });
    }
    std::string Message(const std::wstring& text) { return Error(text).text; }

    /// The output as "name type, ..." in the order of names.
    std::string Columns(const RefCntPtr<VQLQuery>& query) {
        std::string text;
        for (const RefCntPtr<VQLColumn>& column : query->GetColumnSpace()->GetColumns())
            text += (text.empty() ? "" : ", ") + narrow(column->GetName().AsString()) + " " +
                    narrow(FormatDataType(column->GetDataType()));
        return text;
    }
    /// The type that an expression over [t] is found to have, and its expression type.
    std::string TypeOf(const std::wstring& expression) {
        m_expression = nullptr;
        const auto text =
            L"(project (restrict (table [t]) ([i] [d] [s] [b] [day] [at] [span])) (([x] " + expression + L")))";
        const auto query = DynamicPtrCast<VQLProjectQuery>(Check(text));
        m_expression = query->GetBindings()[0].second;
        return narrow(FormatDataType(m_expression->GetDataType())) + " " +
               narrow(FormatExpressionType(m_expression->GetExpressionType()));
    }
    std::string TypeError(const std::wstring& expression) {
        return Message(L"(project (table [t]) (([x] " + expression + L")))");
    }
    VQLIdentifierSet Names(const std::vector<const wchar_t*>& names) {
        VQLIdentifierSet set;
        for (const wchar_t* name : names) set.insert(VQLIdentifier::Unquoted(name, m_text.dictionary));
        return set;
    }
    bool Unique(const RefCntPtr<VQLQuery>& query, const std::vector<const wchar_t*>& names) {
        return query->IsUnique(Names(names));
    }
    bool Sorted(const RefCntPtr<VQLQuery>& query, const std::vector<std::pair<const wchar_t*, VQLSortSense>>& specs) {
        VQLQuery::SortSpecs wanted;
        for (const auto& [name, sense] : specs)
            wanted.push_back({VQLIdentifier::Unquoted(name, m_text.dictionary), sense});
        return query->IsSortedBy(wanted);
    }
    bool Equal(const RefCntPtr<VQLQuery>& query, const wchar_t* a, const wchar_t* b) {
        return query->IsEquivalent(VQLIdentifier::Unquoted(a, m_text.dictionary),
                                   VQLIdentifier::Unquoted(b, m_text.dictionary));
    }

    SyntaxText m_text;
    std::map<VQLIdentifier, RefCntPtr<VQLTable>> m_tables;
    VQLTableSpaceFamily m_family{m_text.dictionary};
    RefCntPtr<VQLExpression> m_expression;
};

constexpr VQLSortSense asc = VQLSortSense::ascending;
constexpr VQLSortSense desc = VQLSortSense::descending;

TEST_F(VQLQueryCheckerTest, TypesExpressions) {
    struct {
        const wchar_t* expression;
        const char* type;
    } const cases[] = {
        {L"1", "integer const"},
        {L"i", "integer scalar"},
        {L"(+ 1 2)", "integer const"},
        {L"(+ i 2.5)", "double scalar"},
        {L"(/ i i)", "double scalar"},
        {L"(+ s \"x\")", "string scalar"},
        {L"(+ day 1)", "date scalar"},
        {L"(- at at)", "double scalar"},
        {L"(* span 2)", "duration scalar"},
        {L"(> day #2001-01-01 00:00:00#)", "boolean scalar"},
        {L"(year day)", "integer scalar"},
        {L"(max i 3)", "integer scalar"},
        {L"(case b 1 2.5)", "double scalar"},
        {L"(case b day at)", "datetime scalar"},
        {L"(case b null s)", "string scalar"},
        {L"(case null i 2)", "integer scalar"},
        {L"(case true 1 2)", "integer const"},
        {L"(cast ((factory builtin) (builtin date)) s)", "date scalar"},
        {L"(cast ((factory varchar)) i)", "string scalar"},
        {L"null", "unknown const"},
        {L"(* 2.5 null)", "double const"},
        {L"(= null null)", "boolean const"},
        {L"(greatest null null)", "unknown const"},
        {L"(to_str null)", "string const"},
    };
    for (const auto& c : cases) EXPECT_EQ(TypeOf(c.expression), c.type) << narrow(c.expression);
    TypeOf(L"(+ s \"x\")");
    EXPECT_EQ(DynamicPtrCast<VQLFuncallExpression>(m_expression)->GetPrimitiveOp(), L"concat");
}

TEST_F(VQLQueryCheckerTest, RefusesWrongExpressions) {
    EXPECT_EQ(Error(L"(project (table [t])\n (([x] (+ i nosuch))))"),
              (RaisedError{49009, "no such column [nosuch]", 1, 12}));
    EXPECT_EQ(TypeError(L"(frobnicate 1)"), "no such function (frobnicate integer)");
    EXPECT_EQ(TypeError(L"(% d d)"), "no such function (% double double)");
    EXPECT_EQ(TypeError(L"(+ null null)"), "ambiguous function call (+ unknown unknown), 7 possible resolutions");
    EXPECT_EQ(TypeError(L"(case i 1 2)"), "case predicate is not boolean");
    EXPECT_EQ(TypeError(L"(case b i s)"), "mismatched case result types (case integer string)");
    EXPECT_EQ(TypeError(L"(+ (sum i) j)"), "cannot mix aggregate and scalar expressions");
    EXPECT_EQ(TypeError(L"(case b (sum i) 1)"), "cannot mix aggregate and scalar expressions");
    EXPECT_EQ(TypeError(L"(sum (sum i))"), "aggregate functions require scalar arguments");
}

TEST_F(VQLQueryCheckerTest, GivesNullsTheTypesThatTheirSurroundingsAskFor) {
    const auto nullTypes = [&](const wchar_t* expression) {
        TypeOf(expression);
        const auto pushed = VQLPushDownNullTypes(
            m_text.dictionary, MakeRef<VQLSelectQuery>(VQLPosition(), m_text.Query(L"(table [t])"), m_expression));
        std::string types;
        struct Collector : VQLExpressionVisitor {
            std::string& types;
            explicit Collector(std::string& found) : types(found) {}
            void VisitLiteral(VQLLiteralExpression& e) override {
                if (e.GetLiteral().IsNull()) types += narrow(FormatDataType(e.GetLiteral().GetType())) + " ";
            }
            void VisitIdentifier(VQLIdentifierExpression&) override {}
            void VisitFuncall(VQLFuncallExpression& e) override {
                for (const auto& argument : e.GetArguments()) argument->Accept(*this);
            }
            void VisitCase(VQLCaseExpression& e) override {
                for (const auto& argument : e.GetArguments()) argument->Accept(*this);
            }
        } collector(types);
        DynamicPtrCast<VQLSelectQuery>(pushed)->GetPredicate()->Accept(collector);
        return types;
    };
    EXPECT_EQ(nullTypes(L"(= i null)"), "integer ");
    EXPECT_EQ(nullTypes(L"(* 2.5 null)"), "double ");
    EXPECT_EQ(nullTypes(L"(case null null s)"), "boolean string ");
    EXPECT_EQ(nullTypes(L"(= s (case b null null))"), "string string ");
    EXPECT_EQ(nullTypes(L"(+ i (greatest null null))"), "integer integer ");
    EXPECT_EQ(nullTypes(L"(left s null)"), "unknown ");
    EXPECT_EQ(nullTypes(L"null"), "unknown ");
}

TEST_F(VQLQueryCheckerTest, FindsTheColumnsOfEachForm) {
    EXPECT_EQ(Columns(Check(L"(table [u])")), "[e] double, [id] integer, [x] integer");
    EXPECT_EQ(Columns(Check(L"(table [u] (([id] [key])))")), "[e] double, [key] integer, [x] integer");
    // A column given the name of another takes its place.
    EXPECT_EQ(Columns(Check(L"(table [u] (([id] [e])))")), "[e] integer, [x] integer");
    EXPECT_EQ(Columns(Check(L"(domain [t].[c])")), "[c] string");
    EXPECT_EQ(Columns(Check(L"(select (table [u]) (> x 1))")), "[e] double, [id] integer, [x] integer");
    EXPECT_EQ(Columns(Check(L"(project (table [u]) (([x] \"s\") ([y] 1)))")),
              "[e] double, [id] integer, [x] string, [y] integer");
    EXPECT_EQ(Columns(Check(L"(restrict (table [u]) ([x] [x] [e]))")), "[e] double, [x] integer");
    EXPECT_EQ(Columns(Check(L"(pivot (table [u]) ([tag] ([p] [q])) (([v] ([id] [x]))))")),
              "[e] double, [tag] string, [v] integer");
    EXPECT_EQ(Columns(Check(L"(aggregate (table [u]) (([g] (+ x 1))) (([n] (count)) ([m] (max e)) ([k] 7)))")),
              "[g] integer, [k] integer, [m] double, [n] integer");
    EXPECT_EQ(Columns(Check(L"(order (table [u]) ((x asc) (e desc [rank])))")),
              "[e] double, [id] integer, [rank] integer, [x] integer");
    EXPECT_EQ(Columns(Check(L"(top (table [u]) ((x asc [rank])) 5)")), "[e] double, [id] integer, [x] integer");
    EXPECT_EQ(Columns(Check(L"(join (table [u]) (table [t]) ((x i)) (([s] s) ([id] (+ d 1))))")),
              "[e] double, [id] double, [s] string, [x] integer");
    EXPECT_EQ(Columns(Check(L"(indextable [t] [i])")), "[i.COUNT] integer, [i.START] integer, [i] integer");
    EXPECT_EQ(
        Columns(Check(L"(indexjoin (restrict (table [t]) ([s])) (indextable [t] [i]) (([v] i)) [i.START] [i.COUNT])")),
        "[s] string, [v] integer");
    EXPECT_EQ(Columns(Check(L"(exchange (table [u]) 2)")), "[e] double, [id] integer, [x] integer");
    EXPECT_EQ(Columns(Check(L"(append (table [u]) (restrict (table [t]) ([i] [id] [d])) (([i] [x])))")),
              "[id] integer, [x] integer");
    EXPECT_EQ(Columns(Check(L"(append (table [u]) (table [u]) () (restrict (table [u]) ([e] [x])) ())")),
              "[e] double, [x] integer");
}

TEST_F(VQLQueryCheckerTest, RefusesWrongQueries) {
    struct {
        const wchar_t* text;
        int code;
        const char* message;
    } const cases[] = {
        {L"(table [nosuch])", 49037, "no such table [nosuch]"},
        {L"(table [t] \"/other\")", 48021, "no such database (/other)"},
        {L"(table [t] (([nosuch] [a])))", 49037, "no such column [nosuch]"},
        {L"(domain [nosuch].[c])", 49037, "no such table [nosuch]"},
        {L"(domain [t].[nosuch])", 49037, "no such column [nosuch]"},
        {L"(domain [t].[i])", 49037, "column [i] is not compressed, domain not available"},
        {L"(text \"nosuch\")", 49037, "no such text file nosuch"},
        {L"(select (table [t]) 1)", 49035, "select predicate must be boolean"},
        {L"(select (table [t]) (> (sum i) 1))", 49035, "select predicate must be scalar"},
        {L"(select (table [t]) (sum i))", 49035, "select predicate must be scalar"},
        {L"(project (table [t]) (([x] (sum i))))", 49035, "project expressions must be scalar"},
        {L"(restrict (table [t]) ([nosuch]))", 49037, "no such column [nosuch]"},
        {L"(pivot (table [t]) ([g] ([p])) (([v] ([nosuch]))))", 49037, "no such pivot column [nosuch]"},
        {L"(pivot (table [t]) ([g] ([p] [q])) (([v] ([i] [s]))))", 49037, "pivoted data type not unique for group [v]"},
        {L"(aggregate (table [t]) (([g] (sum i))) ())", 49035, "group-by expressions must be scalar"},
        {L"(aggregate (table [t]) () (([m] i)))", 49035, "measure expressions must be aggregate"},
        {L"(order (table [t]) (((sum i) asc)))", 49035, "order expressions must be scalar"},
        {L"(top (table [t]) (((sum i) asc)) 1)", 49035, "order expressions must be scalar"},
        {L"(join (table [t]) (table [u]) ((i e)) ())", 49035, "join expressions must have same data type"},
        {L"(join (table [t]) (table [u]) (((sum i) x)) ())", 49035, "join expressions must be scalar"},
        {L"(join (table [t]) (table [u]) () (([y] (sum x))))", 49035, "join expressions must be scalar"},
        {L"(join (table [t]) (table [u]) ((x i)) ())", 49009, "no such column [x]"},
        {L"(indextable [t] [nosuch])", 49037, "no such column [nosuch]"},
        {L"(append (table [t]) (table [u]) (([nosuch] [i])))", 49037, "no such column [nosuch]"},
        {L"(append (table [t]) (table [u]) (([x] [i]) ([id] [i])))", 49037,
         "Column [i] has been mapped to multiple columns in the other input"},
        {L"(append (table [t]) (table [u]) (([x] [i]) ([x] [j])))", 49037,
         "Column [x] has been mapped to multiple columns in the other input"},
    };
    for (const auto& c : cases) {
        const RaisedError error = Error(c.text);
        EXPECT_EQ(error.text, c.message);
        EXPECT_EQ(error.code, c.code) << c.message;
    }
    EXPECT_EQ(Error(L"(restrict\n (select (table [t])\n 1) ([i]))"),
              (RaisedError{49035, "select predicate must be boolean", 2, 1}));
}

TEST_F(VQLQueryCheckerTest, ReadsOnlyTheColumnsAScanWants) {
    const auto scan = [&](std::vector<const wchar_t*> wanted, VQLColumnMap map) {
        const RefCntPtr<VQLQuery> query =
            MakeRef<VQLTableQuery>(VQLPosition(), m_text.Name(L"[t]"), std::wstring(), std::move(map), Names(wanted));
        VQLQueryChecker{m_family}(query);
        return query;
    };
    EXPECT_EQ(Columns(scan({L"i", L"s"}, {})), "[i] integer, [s] string");
    VQLColumnMap map;
    map.Insert(m_text.Name(L"[s]"), m_text.Name(L"[s#1]"));
    EXPECT_EQ(Columns(scan({L"s#1", L"i"}, map)), "[i] integer, [s#1] string");
    EXPECT_EQ(Raised([&] { scan({L"nosuch"}, {}); }).text, "no such column [nosuch]");
    // Keys and orderings hold as far as their columns are read.
    EXPECT_TRUE(Unique(scan({L"id"}, {}), {L"id"}));
    EXPECT_FALSE(Unique(scan({L"day"}, {}), {L"day"}));
    EXPECT_TRUE(Sorted(scan({L"c"}, {}), {{L"c", asc}}));
    EXPECT_FALSE(Sorted(scan({L"j"}, {}), {{L"j", desc}}));
}

TEST_F(VQLQueryCheckerTest, RemembersWhereADictionaryLies) {
    const auto query = Check(L"(select (table [t] (([c] [code]))) true)");
    const RefCntPtr<VQLColumn> column = query->GetColumnSpace()->GetColumn(m_text.Name(L"[code]"));
    EXPECT_EQ(column->GetProperty(usrpropkey::dictionary_column_name), L"[t].[c]");
    const auto project = DynamicPtrCast<VQLProjectQuery>(Check(L"(project (table [t]) (([x] c) ([y] i)))"));
    EXPECT_EQ(project->GetBindings()[0].second->GetDomainName().AsString(), L"[t].[c]");
    EXPECT_EQ(project->GetBindings()[1].second->GetDomainName().AsString(), L"[i]");
}

TEST_F(VQLQueryCheckerTest, CarriesCollations) {
    const auto query = Check(L"(project (table [t]) (([a] s) ([b] (+ \"x\" s)) ([c] (char_length s)) ([d] \"y\")))");
    const VQLColumnSpace& columns = *query->GetColumnSpace();
    for (const wchar_t* name : {L"[a]", L"[b]"})
        EXPECT_EQ(columns.GetColumn(m_text.Name(name))->GetProperty(usrpropkey::collation), L"de");
    for (const wchar_t* name : {L"[c]", L"[d]"})
        EXPECT_FALSE(columns.GetColumn(m_text.Name(name))->HasProperty(usrpropkey::collation));
}

TEST_F(VQLQueryCheckerTest, DerivesKeysAndOrderingsOfTables) {
    const auto table = Check(L"(table [t])");
    EXPECT_TRUE(Unique(table, {L"id"}));
    EXPECT_TRUE(Unique(table, {L"at", L"day", L"i"}));
    EXPECT_FALSE(Unique(table, {L"at", L"i"}));
    EXPECT_TRUE(Sorted(table, {}));
    EXPECT_TRUE(Sorted(table, {{L"id", asc}}));
    EXPECT_TRUE(Sorted(table, {{L"c", asc}, {L"j", desc}}));
    EXPECT_FALSE(Sorted(table, {{L"c", asc}, {L"j", asc}}));
    EXPECT_FALSE(Sorted(table, {{L"j", desc}}));
    EXPECT_TRUE(table->AreColumnsSorted(Names({L"j", L"c"})));
    EXPECT_FALSE(table->AreColumnsSorted(Names({L"j"})));
}

TEST_F(VQLQueryCheckerTest, CarriesFactsThroughProjects) {
    const auto query = Check(L"(project (table [t]) (([k] id) ([z] (+ i j)) ([c] s)))");
    EXPECT_TRUE(Unique(query, {L"k"}));
    EXPECT_TRUE(Unique(query, {L"id"}));
    EXPECT_TRUE(Equal(query, L"k", L"id"));
    EXPECT_TRUE(Sorted(query, {{L"k", asc}}));
    // The old c is hidden by a column of its name; so is the ordering that begins with it. The new one equals s.
    EXPECT_FALSE(Sorted(query, {{L"c", asc}}));
    EXPECT_TRUE(Equal(query, L"c", L"s"));
    EXPECT_TRUE(query->DependsOn(m_text.Name(L"[z]"), m_text.Name(L"[i]")));
    EXPECT_FALSE(query->DependsOn(m_text.Name(L"[i]"), m_text.Name(L"[z]")));

    // Columns that change places take their facts along.
    const auto swapped = Check(L"(project (table [u]) (([id] x) ([x] id)))");
    EXPECT_TRUE(Unique(swapped, {L"x"}));
    EXPECT_FALSE(Unique(swapped, {L"id"}));
    EXPECT_FALSE(Equal(swapped, L"id", L"x"));
    EXPECT_FALSE(Unique(Check(L"(project (table [u]) (([id] (+ id 1))))"), {L"id"}));
}

TEST_F(VQLQueryCheckerTest, DropsFactsWithTheirColumns) {
    const auto query = Check(L"(restrict (project (table [t]) (([k] id) ([z] (+ i j)))) ([k] [z] [day] [c]))");
    EXPECT_TRUE(Unique(query, {L"k"}));
    EXPECT_FALSE(Equal(query, L"k", L"id"));
    EXPECT_TRUE(query->GetDependencies().empty());
    EXPECT_FALSE(Unique(query, {L"day"}));
    EXPECT_TRUE(Sorted(query, {{L"c", asc}}));
    EXPECT_FALSE(Sorted(query, {{L"c", asc}, {L"j", desc}}));
}

TEST_F(VQLQueryCheckerTest, DerivesFactsOfAggregates) {
    const auto grouped = Check(L"(aggregate (table [t]) (([g] i) ([h] id)) (([n] (count))))");
    EXPECT_TRUE(Unique(grouped, {L"g", L"h"}));
    EXPECT_TRUE(Unique(grouped, {L"h"}));
    EXPECT_FALSE(Unique(grouped, {L"g"}));
    EXPECT_FALSE(Sorted(grouped, {{L"h", asc}}));
    EXPECT_TRUE(Unique(Check(L"(aggregate (table [t]) () (([n] (count))))"), {}));
    // A measure under the name of a group-by hides it.
    EXPECT_FALSE(Unique(Check(L"(aggregate (table [t]) (([n] i)) (([n] (count))))"), {L"n"}));

    const auto ordered = [&](const wchar_t* groupBys) {
        const auto plain = DynamicPtrCast<VQLAggregateQuery>(
            m_text.Query(std::wstring(L"(aggregate (table [t]) ") + groupBys + L" (([n] (count))))"));
        const RefCntPtr<VQLQuery> query = MakeRef<VQLAggregateQuery>(VQLPosition(), plain->GetInput(),
                                                                     plain->GetGroupBys(), plain->GetMeasures(), true);
        VQLQueryChecker{m_family}(query);
        return query;
    };
    EXPECT_TRUE(Sorted(ordered(L"(([a] c) ([b] j))"), {{L"a", asc}, {L"b", desc}}));
    EXPECT_EQ(Raised([&] { ordered(L"()"); }).text, "group-by expressions of an ordered aggregate cannot be empty");
    EXPECT_EQ(Raised([&] { ordered(L"(([a] (+ i 1)))"); }).text,
              "group-by expressions of an ordered aggregate must be trivial");
    EXPECT_EQ(Raised([&] { ordered(L"(([a] j))"); }).text,
              "no matching sort for a group-by clause of an ordered aggregate");
}

TEST_F(VQLQueryCheckerTest, DerivesTheOrderOfRows) {
    const auto order = Check(L"(order (project (table [t]) (([k] i))) ((i desc) (s asc)))");
    EXPECT_TRUE(Sorted(order, {{L"i", desc}, {L"s", asc}}));
    EXPECT_TRUE(Sorted(order, {{L"k", desc}}));
    EXPECT_FALSE(Sorted(order, {{L"id", asc}}));
    // What comes behind an expression that no column shows is not known.
    EXPECT_FALSE(Sorted(Check(L"(top (table [t]) (((- i) asc) (s asc)) 5)"), {{L"s", asc}}));
    EXPECT_TRUE(Unique(order, {L"id"}));
}

TEST_F(VQLQueryCheckerTest, DerivesFactsOfJoins) {
    const auto lookup = Check(L"(join (table [t]) (table [u]) ((i id)) (([uid] id) ([ux] x)))");
    EXPECT_TRUE(Equal(lookup, L"i", L"uid"));
    EXPECT_TRUE(Unique(lookup, {L"id"}));
    EXPECT_FALSE(Unique(lookup, {L"uid"}));
    EXPECT_FALSE(Sorted(lookup, {{L"id", asc}}));
    const auto both = Check(L"(join (table [t]) (table [u]) ((id id)) (([uid] id)))");
    EXPECT_TRUE(Unique(both, {L"id"}) && Unique(both, {L"uid"}));
    const auto many = Check(L"(join (table [t]) (table [u]) ((i x)) (([uid] id)))");
    EXPECT_FALSE(Unique(many, {L"id"}) || Unique(many, {L"uid"}));
    const auto outer = Check(L"(leftjoin (table [t]) (table [u]) ((i id)) (([uid] id)))");
    EXPECT_FALSE(Equal(outer, L"i", L"uid"));
    EXPECT_FALSE(Unique(Check(L"(join (table [t]) (table [u]) () (([uid] id)))"), {L"id"}));
    // An import that hides the left column of a key takes the key away.
    EXPECT_FALSE(Unique(Check(L"(join (table [t]) (table [u]) ((i id)) (([id] x)))"), {L"id"}));
}

TEST_F(VQLQueryCheckerTest, PivotedRowsAreToldApartByTheirTag) {
    const auto pivot = Check(L"(pivot (table [t]) ([tag] ([p] [q])) (([v] ([i] [j]))))");
    EXPECT_FALSE(Unique(pivot, {L"id"}));
    EXPECT_TRUE(Unique(pivot, {L"id", L"tag"}));
}

TEST_F(VQLQueryCheckerTest, ChecksAgainOnlyWhenTold) {
    const auto query = Check(L"(select (table [t]) b)");
    const RefCntPtr<VQLColumnSpace> before = query->GetColumnSpace();
    VQLQueryChecker checker(m_family);
    checker(query);
    EXPECT_EQ(query->GetColumnSpace(), before);
    checker.SetForceRebuild(true);
    checker.SetDeriveSortsAndUniqueKeys(false);
    checker(query);
    EXPECT_NE(query->GetColumnSpace(), before);
    EXPECT_TRUE(query->GetUniqueKeys().empty());
    EXPECT_TRUE(query->GetSortSpecsList().empty());
}

TEST_F(VQLQueryCheckerTest, ChecksAsDeepAsTheParserAllows) {
    std::wstring deep = L"i";
    for (unsigned i = 0; i < 1990; ++i) deep = L"(- " + deep + L")";
    EXPECT_EQ(TypeOf(deep), "integer scalar");
    std::wstring selects = L"(table [t])";
    for (unsigned i = 0; i < 1990; ++i) selects = L"(select " + selects + L" b)";
    EXPECT_TRUE(Check(selects)->HasColumnSpace());
}

}  // namespace
}  // namespace qve
