#include "vql/VQLRewriteCorrelations.h"

#include "metrics/Scope.h"
#include "vql/VQLDeviations.h"
#include "vql/VQLExpressions.h"

namespace qve {
namespace {

class RewriteQueries : public VQLDeviations {
public:
    RewriteQueries(VQLIdentifierFactory& factory, const VQLKeepAggregate& keep)
        : VQLDeviations(factory, {L"corr"}, keep) {}

private:
    RefCntPtr<VQLExpression> Result(Layers& layers, const VQLFuncallExpression& measure) const override {
        const auto [x, y] = DeviationsOf(layers, measure.GetArguments()[0], measure.GetArguments()[1]);
        const auto root = [&layers](const Deviation& a) { return Call(L"sqrt", {SumOfProducts(layers, a, a)}); };
        return Call(L"/", {SumOfProducts(layers, x, y), Call(L"*", {root(x), root(y)})});
    }
};

}  // namespace

RefCntPtr<VQLQuery> VQLRewriteCorrelations(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query,
                                           const VQLKeepAggregate& keep) {
    Metrics::Scope scope("VQLRewriteCorrelations");
    return RewriteQueries(factory, keep)(query);
}

}  // namespace qve
