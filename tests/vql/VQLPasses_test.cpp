#include <gtest/gtest.h>

#include "tests/vql/pass_text.h"
#include "tests/vql/raised_error.h"
#include "vql/VQLExpressionCloner.h"
#include "vql/VQLLowerAggregates.h"
#include "vql/VQLLowerOrders.h"
#include "vql/VQLMarkOrderedAggregates.h"
#include "vql/VQLPushDownNullTypes.h"
#include "vql/VQLQueries.h"
#include "vql/VQLRemoveRestricts.h"
#include "vql/VQLRemoveTrivialProjectBindings.h"
#include "vql/VQLRestrictScans.h"
#include "vql/VQLUniquifyColumns.h"

namespace qve {
namespace {

using test::PassText;
using test::SyntaxText;

using Pass = RefCntPtr<VQLQuery> (*)(PassText&, const RefCntPtr<VQLQuery>&);

struct Case {
    const wchar_t* query;
    const wchar_t* result;  // null: the pass changes nothing
};

template <size_t N>
void Check(Pass pass, const Case (&cases)[N]) {
    for (const Case& test : cases) {
        PassText passes;
        const std::wstring expected = test.result ? std::wstring(test.result) : passes.Plain(test.query);
        const std::wstring actual = passes.After(test.query, [&](const auto& query) { return pass(passes, query); });
        EXPECT_EQ(narrow(actual), narrow(expected)) << narrow(test.query);
    }
}

TEST(VQLPasses, LowerAggregatesIntoThreeLayers) {
    const Case cases[] = {
        {L"(aggregate (table [t]) (([g] [g])) (([n] (count)) ([s] (sum [d])) ([q] (quantile [d] 0.5))))", nullptr},
        {L"(aggregate (table [t]) (([y] (year [at])) ([g] [g])) (([s] (sum (* [d] 2)))))",
         L"(project (aggregate (project (table [t]) (([$temp0] (year [at])) ([$temp1] (* [d] 2)))) (([$temp0] "
         L"[$temp0]) ([g] [g])) (([s] (sum [$temp1])))) (([y] [$temp0])))"},
        // What is left of a measure is computed above; equal calls and equal arguments are computed once.
        {L"(aggregate (table [t]) () (([x] (+ (sum [i]) 1)) ([y] (* (sum [i]) (sum (- [i]))))))",
         L"(project (aggregate (project (table [t]) (([$temp1] (- [i])))) () (([$temp0] (sum [i])) ([$temp2] (sum "
         L"[$temp1])))) (([x] (+ [$temp0] 1)) ([y] (* [$temp0] [$temp2]))))"},
        {L"(aggregate (table [t]) () (([x] (sum (- [i]))) ([y] (sum (- [i])))))",
         L"(project (aggregate (project (table [t]) (([$temp0] (- [i])))) () (([x] (sum [$temp0])))) (([y] [x])))"},
        // A group-by under another name, twice, and a measure with the name of a key.
        {L"(aggregate (table [t]) (([a] [g]) ([b] [g])) (([n] (count))))",
         L"(project (aggregate (table [t]) (([g] [g])) (([n] (count)))) (([a] [g]) ([b] [g])))"},
        {L"(aggregate (table [t]) (([g] [g])) (([g] (max [i]))))",
         L"(project (aggregate (table [t]) (([g] [g])) (([$temp0] (max [i])))) (([g] [$temp0])))"},
        {L"(aggregate (table [t]) () (([one] 1) ([c] (case (> (count) 0) (sum [d]) 0.0))))",
         L"(project (aggregate (table [t]) () (([$temp0] (count)) ([$temp1] (sum [d])))) (([one] 1) ([c] (case (> "
         L"[$temp0] 0) [$temp1] 0.0))))"},
    };
    Check([](PassText& passes,
             const RefCntPtr<VQLQuery>& query) { return VQLLowerAggregates(passes.GetFactory(), query); },
          cases);
}

TEST(VQLPasses, LowerOrdersToColumns) {
    const Case cases[] = {
        {L"(order (table [t]) (([g] asc) ([d] desc [row])))", nullptr},
        {L"(order (table [t]) (((+ [g] 1) asc) ([d] desc) ((upper [s]) desc)))",
         L"(order (project (table [t]) (([$temp0] (+ [g] 1)) ([$temp1] (upper [s])))) (([$temp0] asc) ([d] desc) "
         L"([$temp1] desc)))"},
        {L"(top (select (table [t]) [b]) (((- [d]) asc)) 3)",
         L"(top (project (select (table [t]) [b]) (([$temp0] (- [d])))) (([$temp0] asc)) 3)"},
    };
    Check([](PassText& passes, const RefCntPtr<VQLQuery>& query) { return VQLLowerOrders(passes.GetFactory(), query); },
          cases);
}

TEST(VQLPasses, RemoveTrivialBindingsAndEmptyProjects) {
    const Case cases[] = {
        {L"(project (table [t]) (([x] [g]) ([g] [h])))", nullptr},
        {L"(project (table [t]) (([g] [g]) ([x] [g])))", L"(project (table [t]) (([x] [g])))"},
        {L"(select (project (project (table [t]) (([g] [g]))) (([h] [h]))) [b])", L"(select (table [t]) [b])"},
    };
    Check(
        [](PassText& passes, const RefCntPtr<VQLQuery>& query) {
            return VQLRemoveTrivialProjectBindings(passes.GetDictionary(), query);
        },
        cases);
}

TEST(VQLPasses, RemoveRestrictsEverywhere) {
    const Case cases[] = {
        {L"(project (table [t]) (([x] [g])))", nullptr},
        {L"(restrict (join (restrict (table [t]) ([g])) (restrict (table [u]) ([g] [n])) (([g] [g])) (([n] [n]))) "
         L"([n]))",
         L"(join (table [t]) (table [u]) (([g] [g])) (([n] [n])))"},
    };
    Check([](PassText& passes,
             const RefCntPtr<VQLQuery>& query) { return VQLRemoveRestricts(passes.GetDictionary(), query); },
          cases);
}

// The text of nulls does not tell their types, so the literals are asked.
TEST(VQLPasses, PushDownTheTypesOfNulls) {
    const struct {
        const wchar_t* expression;
        VQLDataType type;
    } cases[] = {
        {L"(+ [i] null)", VQLDataType::integer},
        {L"(case [b] null [s])", VQLDataType::string},
        {L"(case [b] (case [b] [day] null) [at])", VQLDataType::date},
        {L"(* 2.5 null)", VQLDataType::double_},
        {L"null", VQLDataType::unknown},
    };
    class Nulls : public VQLExpressionCloner {
    public:
        using VQLExpressionCloner::VQLExpressionCloner;
        RefCntPtr<VQLExpression> VisitLiteral(const VQLLiteralExpression& expression) override {
            if (expression.GetLiteral().IsNull()) types.push_back(expression.GetLiteral().GetType());
            return VQLExpressionCloner::VisitLiteral(expression);
        }
        std::vector<VQLDataType> types;
    };
    for (const auto& test : cases) {
        PassText passes;
        const auto query = passes.Checked(std::wstring(L"(project (table [t]) (([x] ") + test.expression + L")))");
        const auto typed = DynamicPtrCast<VQLProjectQuery>(VQLPushDownNullTypes(passes.GetDictionary(), query));
        Nulls nulls(passes.GetDictionary());
        nulls(typed->GetBindings()[0].second);
        EXPECT_EQ(nulls.types, std::vector{test.type}) << narrow(test.expression);
    }
}

TEST(VQLPasses, GiveEveryColumnANameOfItsOwn) {
    const Case cases[] = {
        {L"(select (project (restrict (table [u]) ([g] [n])) (([g] (+ [g] [n])))) (> [g] 1))",
         L"(select (project (restrict (table [u] (([g] [g#0]) ([n] [n#1]) ([w] [w#2]))) ([g#0] [n#1])) (([g#3] (+ "
         L"[g#0] [n#1])))) (> [g#3] 1))"},
        {L"(aggregate (table [u]) (([g] [g])) (([n] (sum [n]))))",
         L"(aggregate (table [u] (([g] [g#0]) ([n] [n#1]) ([w] [w#2]))) (([g#0] [g#0])) (([n#3] (sum [n#1]))))"},
        {L"(join (table [u]) (table [u]) (([g] [n])) (([w] [w])))",
         L"(join (table [u] (([g] [g#0]) ([n] [n#1]) ([w] [w#2]))) (table [u] (([g] [g#3]) ([n] [n#4]) ([w] [w#5]))) "
         L"(([g#0] [n#4])) (([w#6] [w#5])))"},
        {L"(order (table [u]) (([g] asc [row])))",
         L"(order (table [u] (([g] [g#0]) ([n] [n#1]) ([w] [w#2]))) (([g#0] asc [row#3])))"},
        {L"(append (table [u]) (table [u]) (([n] [g]) ([g] [n])))",
         L"(append (table [u] (([g] [g#0]) ([n] [n#1]) ([w] [w#2]))) (table [u] (([g] [g#3]) ([n] [n#4]) ([w] [w#5]))) "
         L"(([n#4] [g#0]) ([g#3] [n#1]) ([w#5] [w#2])))"},
    };
    Check(
        [](PassText& passes, const RefCntPtr<VQLQuery>& query) {
            VQLColumnMap columns;
            return VQLUniquifyColumns(passes.GetFactory(), query, columns);
        },
        cases);
}

// The names come back where they are unambiguous, and over all the client's names are bound.
TEST(VQLPasses, GiveColumnsTheirNamesBack) {
    const Case cases[] = {
        {L"(aggregate (select (table [u]) (> [w] 1.5)) (([g] [g])) (([s] (sum [n]))))",
         L"(aggregate (select (table [u] (([g] [g]) ([n] [n]) ([w] [w]))) (> [w] 1.5)) (([g] [g])) (([s] (sum [n]))))"},
        {L"(project (table [u]) (([g] (+ [g] [n]))))",
         L"(project (project (table [u] (([g] [g#0]) ([n] [n]) ([w] [w]))) (([g#3] (+ [g#0] [n])))) (([g] [g#3])))"},
        {L"(join (table [u]) (table [u]) (([g] [n])) (([w] [w])))",
         L"(project (join (table [u] (([g] [g#0]) ([n] [n#1]) ([w] [w#2]))) (table [u] (([g] [g#3]) ([n] [n#4]) ([w] "
         L"[w#5]))) (([g#0] [n#4])) (([w#6] [w#5]))) (([g] [g#0]) ([n] [n#1]) ([w] [w#6])))"},
    };
    Check(
        [](PassText& passes, const RefCntPtr<VQLQuery>& query) {
            VQLColumnMap columns;
            const auto unique = passes.Check(VQLUniquifyColumns(passes.GetFactory(), query, columns));
            const auto plain = passes.Check(VQLDeuniquifyColumns(passes.GetDictionary(), columns, unique));
            return VQLRemoveTrivialProjectBindings(passes.GetDictionary(), plain);
        },
        cases);
}

// The text with what each leaf scans.
std::wstring WithScans(const RefCntPtr<VQLQuery>& query) {
    const std::wstring annotated = FormatQuery(query, true);
    std::wstring scans;
    for (size_t at = 0; (at = annotated.find(L"scan=(", at)) != std::wstring::npos; ++at)
        scans += L" " + annotated.substr(at, annotated.find(L')', at) + 1 - at);
    return SyntaxText::Text(query) + scans;
}

TEST(VQLPasses, ScanOnlyWhatIsRead) {
    const struct {
        const wchar_t* query;
        bool exact;
        const wchar_t* result;
    } cases[] = {
        {L"(aggregate (table [t]) (([g] [g])) (([s] (sum [d]))))", false,
         L"(aggregate (table [t]) (([g] [g])) (([s] (sum [d])))) scan=([d] [g])"},
        // A binding that nobody reads goes, and with it what it reads.
        {L"(aggregate (project (table [t]) (([x] (+ [d] [e])) ([y] (upper [s])))) () (([m] (max [x]))))", false,
         L"(aggregate (project (table [t]) (([x] (+ [d] [e])))) () (([m] (max [x])))) scan=([d] [e])"},
        {L"(aggregate (aggregate (table [t]) (([g] [g])) (([a] (sum [d])) ([b] (sum [e])))) () (([m] (max [b]))))",
         false,
         L"(aggregate (aggregate (table [t]) (([g] [g])) (([b] (sum [e])))) () (([m] (max [b])))) scan=([e] [g])"},
        // Where only rows count, one narrow column is read.
        {L"(aggregate (table [u]) () (([n] (count))))", false,
         L"(aggregate (table [u]) () (([n] (count)))) scan=([g])"},
        {L"(aggregate (join (table [t]) (table [u]) (([g] [g])) (([n] [n]) ([w] [w]))) (([h] [h])) (([s] (sum [w]))))",
         false,
         L"(aggregate (join (table [t]) (table [u]) (([g] [g])) (([w] [w]))) (([h] [h])) (([s] (sum [w])))) scan=([g] "
         L"[h]) scan=([g] [w])"},
        {L"(aggregate (order (table [u]) (([g] asc [row]))) () (([m] (max [row]))))", false,
         L"(aggregate (order (table [u]) (([g] asc [row]))) () (([m] (max [row])))) scan=([g])"},
        // Exactly: what a condition alone needs is dropped over it.
        {L"(aggregate (select (table [u]) (> [w] 1.5)) (([g] [g])) (([s] (sum [n]))))", true,
         L"(aggregate (restrict (select (table [u]) (> [w] 1.5)) ([g] [n])) (([g] [g])) (([s] (sum [n])))) scan=([g] "
         L"[n] [w])"},
        {L"(aggregate (append (table [u]) (table [u]) (([n] [g]) ([g] [n]))) () (([m] (max [g]))))", false,
         L"(aggregate (append (table [u]) (table [u]) (([n] [g]))) () (([m] (max [g])))) scan=([g]) scan=([n])"},
    };
    for (const auto& test : cases) {
        PassText passes;
        const auto query = passes.Checked(test.query);
        const auto result =
            passes.Check(VQLRestrictScans(passes.GetFamily(), *query->GetColumnSpace(), test.exact, query));
        EXPECT_EQ(narrow(WithScans(result)), narrow(test.result)) << narrow(test.query);
    }
    PassText passes;
    const auto other = passes.Checked(L"(project (table [u]) (([x] [g])))");
    EXPECT_EQ(test::Raised([&] {
                  VQLRestrictScans(passes.GetFamily(), *other->GetColumnSpace(), false,
                                   passes.Checked(L"(select (table [u]) (> [g] 1))"));
              }).text,
              "wanted column not present in input");
}

TEST(VQLPasses, MarkAggregatesOverSortedInput) {
    const struct {
        const wchar_t* query;
        bool ordered;
    } cases[] = {
        {L"(aggregate (table [t]) (([k] [k])) (([n] (count))))", true},
        {L"(aggregate (select (table [t]) [b]) (([k] [k])) (([n] (count))))", true},
        {L"(aggregate (table [t]) (([g] [g])) (([n] (count))))", false},
        {L"(aggregate (table [t]) (([k] [k]) ([g] [g])) (([n] (count))))", false},
        {L"(aggregate (order (table [t]) (([h] desc) ([g] asc) ([d] asc))) (([g] [g]) ([h] [h])) ())", true},
        {L"(aggregate (order (table [t]) (([h] desc) ([g] asc))) (([g] [g])) ())", false},
        {L"(aggregate (order (table [t]) (([h] desc))) () (([n] (count))))", false},
        {L"(aggregate (join (table [t]) (table [u]) (([g] [g])) ()) (([k] [k])) ())", false},
    };
    for (const auto& test : cases) {
        PassText passes;
        const auto marked = passes.Check(
            VQLMarkOrderedAggregates(passes.GetFamily(), VQLFunction::Table(), passes.Checked(test.query)));
        EXPECT_EQ(DynamicPtrCast<VQLAggregateQuery>(marked)->IsOrdered(), test.ordered) << narrow(test.query);
    }
    PassText passes;
    EXPECT_EQ(test::Raised([&] {
                  VQLMarkOrderedAggregates(passes.GetFamily(), VQLFunction::Table(),
                                           passes.Checked(L"(aggregate (table [t]) (([x] (+ [k] 1))) ())"));
              }).text,
              "group-bys should be trivial at this point");
}

}  // namespace
}  // namespace qve
