#include "vql/VQLRewriteVariances.h"

#include "metrics/Scope.h"
#include "vql/VQLDeviations.h"
#include "vql/VQLExpressions.h"

namespace qve {
namespace {

class RewriteQueries : public VQLDeviations {
public:
    RewriteQueries(VQLIdentifierFactory& factory, const VQLKeepAggregate& keep)
        : VQLDeviations(factory, {L"var", L"varp"}, keep) {}

private:
    RefCntPtr<VQLExpression> Result(Layers& layers, const VQLFuncallExpression& measure) const override {
        const Deviation x = DeviationOf(layers, measure.GetArguments()[0]);
        const bool sample = measure.GetName() == L"var";
        return Call(L"/", {SumOfProducts(layers, x, x), Denominator(layers, x, sample)});
    }
};

}  // namespace

RefCntPtr<VQLQuery> VQLRewriteVariances(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query,
                                        const VQLKeepAggregate& keep) {
    Metrics::Scope scope("VQLRewriteVariances");
    return RewriteQueries(factory, keep)(query);
}

}  // namespace qve
