#include <gtest/gtest.h>

#include "tests/vql/pass_text.h"
#include "tests/vql/raised_error.h"
#include "vql/VQLRewriteCorrelations.h"
#include "vql/VQLRewriteCountd.h"
#include "vql/VQLRewriteCovariances.h"
#include "vql/VQLRewriteQuantiles.h"
#include "vql/VQLRewriteVariances.h"

namespace qve {
namespace {

using test::PassText;

using Rewrite = RefCntPtr<VQLQuery> (*)(VQLIdentifierFactory&, const RefCntPtr<VQLQuery>&);

// A pass that keeps no aggregate.
template <auto Pass>
RefCntPtr<VQLQuery> All(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query) {
    return Pass(factory, query, {});
}
constexpr Rewrite Correlations = All<VQLRewriteCorrelations>;
constexpr Rewrite Covariances = All<VQLRewriteCovariances>;
constexpr Rewrite Variances = All<VQLRewriteVariances>;
constexpr Rewrite Quantiles = All<VQLRewriteQuantiles>;
constexpr Rewrite Countd = All<VQLRewriteCountd>;
constexpr Rewrite rewrites[] = {Correlations, Covariances, Variances, Quantiles, Countd};

std::wstring After(Rewrite rewrite, const std::wstring& text) {
    PassText passes;
    return passes.After(text, [&](const auto& query) { return rewrite(passes.GetFactory(), query); });
}

TEST(VQLRewrites, AreTheSpelledOutForms) {
    struct {
        Rewrite rewrite;
        const wchar_t* query;
        const wchar_t* rewritten;
    } const cases[] = {
        {Variances, L"(aggregate (table [t]) (([g] [g])) (([v] (var [d]))))",
         L"(project (aggregate (project (project (join (table [t]) (project (aggregate (table [t]) (([g] [g])) "
         L"(([$temp0] (sum [d])) ([$temp1] (count [d])))) (([$temp2] (/ [$temp0] [$temp1])) ([$temp6] (- [$temp1] "
         L"1)))) (([g] [g])) (([$temp2] [$temp2]) ([$temp6] [$temp6])) isnotdistinct) (([$temp3] (- [d] [$temp2])))) "
         L"(([$temp4] (* [$temp3] [$temp3])))) (([g] [g])) (([$temp5] (sum [$temp4])) ([$temp7] (min [$temp6])))) "
         L"(([v] (/ [$temp5] [$temp7]))))"},
        {Variances, L"(aggregate (table [t]) () (([v] (varp [i])) ([w] (var [i])) ([n] (count))))",
         L"(project (aggregate (project (project (join (project (table [t]) (([$temp0] (to_real [i])))) (project "
         L"(aggregate (project (table [t]) (([$temp0] (to_real [i])))) () (([$temp1] (sum [$temp0])) ([$temp2] (count "
         L"[$temp0])))) (([$temp3] (/ [$temp1] [$temp2])) ([$temp7] [$temp2]) ([$temp9] (- [$temp2] 1)))) () "
         L"(([$temp3] [$temp3]) ([$temp7] [$temp7]) ([$temp9] [$temp9])) isnotdistinct) (([$temp4] (- [$temp0] "
         L"[$temp3])))) (([$temp5] (* [$temp4] [$temp4])))) () (([n] (count)) ([$temp6] (sum [$temp5])) ([$temp8] (min "
         L"[$temp7])) ([$temp10] (min [$temp9])))) (([v] (/ [$temp6] [$temp8])) ([w] (/ [$temp6] [$temp10]))))"},
        {Covariances, L"(aggregate (table [t]) (([g] [g])) (([c] (covar [d] [i]))))",
         L"(project (aggregate (project (project (join (project (project (table [t]) (([$temp0] (and (not (isnull "
         L"[d])) (not (isnull [i])))))) (([$temp1] (case [$temp0] [d] null)) ([$temp6] (case [$temp0] (to_real [i]) "
         L"null)))) (project (aggregate (project (project (table [t]) (([$temp0] (and (not (isnull [d])) (not (isnull "
         L"[i])))))) (([$temp1] (case [$temp0] [d] null)) ([$temp6] (case [$temp0] (to_real [i]) null)))) (([g] [g])) "
         L"(([$temp2] (sum [$temp1])) ([$temp3] (count [$temp1])) ([$temp7] (sum [$temp6])) ([$temp8] (count "
         L"[$temp6])))) (([$temp4] (/ [$temp2] [$temp3])) ([$temp9] (/ [$temp7] [$temp8])) ([$temp13] (- [$temp3] "
         L"1)))) (([g] [g])) (([$temp4] [$temp4]) ([$temp9] [$temp9]) ([$temp13] [$temp13])) isnotdistinct) (([$temp5] "
         L"(- [$temp1] [$temp4])) ([$temp10] (- [$temp6] [$temp9])))) (([$temp11] (* [$temp5] [$temp10])))) (([g] "
         L"[g])) (([$temp12] (sum [$temp11])) ([$temp14] (min [$temp13])))) (([c] (/ [$temp12] [$temp14]))))"},
        {Correlations, L"(aggregate (table [t]) () (([c] (corr [d] [e]))))",
         L"(project (aggregate (project (project (join (project (project (table [t]) (([$temp0] (and (not (isnull "
         L"[d])) (not (isnull [e])))))) (([$temp1] (case [$temp0] [d] null)) ([$temp6] (case [$temp0] [e] null)))) "
         L"(project (aggregate (project (project (table [t]) (([$temp0] (and (not (isnull [d])) (not (isnull [e])))))) "
         L"(([$temp1] (case [$temp0] [d] null)) ([$temp6] (case [$temp0] [e] null)))) () (([$temp2] (sum [$temp1])) "
         L"([$temp3] (count [$temp1])) ([$temp7] (sum [$temp6])) ([$temp8] (count [$temp6])))) (([$temp4] (/ [$temp2] "
         L"[$temp3])) ([$temp9] (/ [$temp7] [$temp8])))) () (([$temp4] [$temp4]) ([$temp9] [$temp9])) isnotdistinct) "
         L"(([$temp5] (- [$temp1] [$temp4])) ([$temp10] (- [$temp6] [$temp9])))) (([$temp11] (* [$temp5] [$temp10])) "
         L"([$temp13] (* [$temp5] [$temp5])) ([$temp15] (* [$temp10] [$temp10])))) () (([$temp12] (sum [$temp11])) "
         L"([$temp14] (sum [$temp13])) ([$temp16] (sum [$temp15])))) (([c] (/ [$temp12] (* (sqrt [$temp14]) (sqrt "
         L"[$temp16]))))))"},
        {Quantiles, L"(aggregate (table [t]) (([g] [g])) (([q] (quantile [d] 0.5)) ([m] (max [i]))))",
         L"(project (aggregate (project (join (order (table [t]) (([g] asc) ([d] asc [$temp0_row]))) (project (project "
         L"(project (aggregate (order (table [t]) (([g] asc) ([d] asc [$temp0_row]))) (([g] [g])) (([$temp1] (max "
         L"[$temp0_row])) ([$temp2] (count [d])))) (([$temp3] (- (+ [$temp1] 1) [$temp2])))) (([$temp4] (* (- [$temp2] "
         L"1) 0.5)))) (([$temp5] (+ [$temp3] (floor [$temp4]))) ([$temp8] (+ [$temp3] (ceil [$temp4]))) ([$temp11] (- "
         L"[$temp4] (floor [$temp4]))))) (([g] [g])) (([$temp5] [$temp5]) ([$temp8] [$temp8]) ([$temp11] [$temp11])) "
         L"isnotdistinct) (([$temp6] (= [$temp0_row] [$temp5])) ([$temp9] (= [$temp0_row] [$temp8])))) (([g] [g])) "
         L"(([m] (max [i])) ([$temp7] (anyif [d] [$temp6])) ([$temp10] (anyif [d] [$temp9])) ([$temp12] (any "
         L"[$temp11])))) (([q] (+ [$temp7] (* (- [$temp10] [$temp7]) [$temp12])))))"},
        {Quantiles, L"(aggregate (table [t]) () (([q] (quantile [day] 1)) ([r] (quantile [day] 0.25))))",
         L"(project (aggregate (project (join (order (table [t]) (([day] asc [$temp0_row]))) (project (project "
         L"(project (aggregate (order (table [t]) (([day] asc [$temp0_row]))) () (([$temp1] (max [$temp0_row])) "
         L"([$temp2] (count [day])))) (([$temp3] (- (+ [$temp1] 1) [$temp2])))) (([$temp4] (* (- [$temp2] 1) 1.0)) "
         L"([$temp13] (* (- [$temp2] 1) 0.25)))) (([$temp5] (+ [$temp3] (floor [$temp4]))) ([$temp8] (+ [$temp3] (ceil "
         L"[$temp4]))) ([$temp11] (- [$temp4] (floor [$temp4]))) ([$temp14] (+ [$temp3] (floor [$temp13]))) ([$temp17] "
         L"(+ [$temp3] (ceil [$temp13]))) ([$temp20] (- [$temp13] (floor [$temp13]))))) () (([$temp5] [$temp5]) "
         L"([$temp8] [$temp8]) ([$temp11] [$temp11]) ([$temp14] [$temp14]) ([$temp17] [$temp17]) ([$temp20] "
         L"[$temp20])) isnotdistinct) (([$temp6] (= [$temp0_row] [$temp5])) ([$temp9] (= [$temp0_row] [$temp8])) "
         L"([$temp15] (= [$temp0_row] [$temp14])) ([$temp18] (= [$temp0_row] [$temp17])))) () (([$temp7] (anyif [day] "
         L"[$temp6])) ([$temp10] (anyif [day] [$temp9])) ([$temp12] (any [$temp11])) ([$temp16] (anyif [day] "
         L"[$temp15])) ([$temp19] (anyif [day] [$temp18])) ([$temp21] (any [$temp20])))) (([q] (+ [$temp7] (* (- "
         L"[$temp10] [$temp7]) [$temp12]))) ([r] (+ [$temp16] (* (- [$temp19] [$temp16]) [$temp21])))))"},
        {Countd, L"(aggregate (table [t]) () (([n] (countd [i]))))",
         L"(aggregate (aggregate (table [t]) (([i] [i])) ()) () (([n] (count [i]))))"},
        {Countd,
         L"(aggregate (table [t]) (([g] [g])) (([n] (countd [i])) ([m] (countd [s])) ([a] (count)) ([b] (sum [d])) "
         L"([c] (anyif [d] [b]))))",
         L"(join (aggregate (aggregate (table [t]) (([g] [g]) ([i] [i])) (([$temp0] (count)) ([$temp1] (sum [d])) "
         L"([$temp2] (anyif [d] [b])) ([$temp3] (max [b])))) (([g] [g])) (([a] (sum [$temp0])) ([b] (sum [$temp1])) "
         L"([c] (anyif [$temp2] [$temp3])) ([n] (count [i])))) (aggregate (aggregate (table [t]) (([g] [g]) ([s] [s])) "
         L"()) (([g] [g])) (([m] (count [s])))) (([g] [g])) (([m] [m])) isnotdistinct)"},
        {Countd, L"(aggregate (table [t]) (([g] [g])) (([n] (countd [g])) ([q] (quantile [d] 0.5))))",
         L"(join (aggregate (aggregate (table [t]) (([g] [g])) ()) (([g] [g])) (([n] (count [g])))) (aggregate (table "
         L"[t]) (([g] [g])) (([q] (quantile [d] 0.5)))) (([g] [g])) (([q] [q])) isnotdistinct)"},
        // Group-bys that are more than a column get names under the rewrite.
        {Countd, L"(aggregate (table [t]) (([i] (+ [i] 1))) (([n] (countd [i]))))",
         L"(project (aggregate (aggregate (project (table [t]) (([$temp0] (+ [i] 1)))) (([$temp0] [$temp0]) ([i] [i])) "
         L"()) (([$temp0] [$temp0])) (([n] (count [i])))) (([i] [$temp0])))"},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(narrow(After(test.rewrite, test.query)), narrow(test.rewritten)) << narrow(test.query);
    }
}

TEST(VQLRewrites, LeaveOtherMeasuresAlone) {
    const wchar_t* const queries[] = {
        L"(aggregate (table [t]) (([g] [g])) (([a] (sum [d])) ([b] (count)) ([c] (anyif [d] [b]))))",
        L"(aggregate (table [t]) (([g] [g])) ())",
        L"(select (table [t]) [b])",
    };
    for (const wchar_t* query : queries)
        for (const Rewrite rewrite : rewrites) EXPECT_EQ(After(rewrite, query), PassText().Plain(query));
}

TEST(VQLRewrites, LeaveWhatTheEngineComputesItself) {
    const std::wstring query =
        L"(aggregate (aggregate (table [t]) (([g] [g])) (([q] (quantile [d] 0.5)))) () (([n] (countd [q]))))";
    const auto keepsGrouped = [](const VQLAggregateQuery& aggregate) { return !aggregate.GetGroupBys().empty(); };
    PassText passes;
    EXPECT_EQ(
        passes.After(query,
                     [&](const auto& tree) {
                         return VQLRewriteCountd(passes.GetFactory(),
                                                 VQLRewriteQuantiles(passes.GetFactory(), tree, keepsGrouped),
                                                 keepsGrouped);
                     }),
        L"(aggregate (aggregate (aggregate (table [t]) (([g] [g])) (([q] (quantile [d] 0.5)))) (([q] [q])) ()) () "
        L"(([n] (count [q]))))");
}

TEST(VQLRewrites, RefuseWhatTheyCannotExpress) {
    struct {
        Rewrite rewrite;
        std::wstring query;
        test::RaisedError error;
    } cases[] = {
        {Quantiles,
         L"(aggregate (table [t]) () (([q] (quantile [d] [e]))))",
         {49011, "quantile needs a number as its second argument", 0, 32}},
        // Other measures beside the rewritten one are calls once aggregates are lowered.
        {Countd,
         L"(aggregate (table [t]) () (([n] (countd [d])) ([c] (case true (sum [d]) null))))",
         {48033, "measures must be funcalls"}},
        {Variances, L"(table [t])", {48035, "query too large"}},
    };
    // Each level reads its input twice.
    for (int i = 0; i < 40; ++i) cases[2].query = L"(aggregate " + cases[2].query + L" () (([d] (var [d]))))";
    for (const auto& test : cases) {
        EXPECT_EQ(test::Raised([&] { After(test.rewrite, test.query); }), test.error) << narrow(test.query);
    }
}

}  // namespace
}  // namespace qve
