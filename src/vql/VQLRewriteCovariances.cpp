#include "vql/VQLRewriteCovariances.h"

#include "metrics/Scope.h"
#include "vql/VQLDeviations.h"
#include "vql/VQLExpressions.h"

namespace qve {
namespace {

class RewriteQueries : public VQLDeviations {
public:
    RewriteQueries(VQLIdentifierFactory& factory, const VQLKeepAggregate& keep)
        : VQLDeviations(factory, {L"covar", L"covarp"}, keep) {}

private:
    RefCntPtr<VQLExpression> Result(Layers& layers, const VQLFuncallExpression& measure) const override {
        const auto [x, y] = DeviationsOf(layers, measure.GetArguments()[0], measure.GetArguments()[1]);
        const bool sample = measure.GetName() == L"covar";
        return Call(L"/", {SumOfProducts(layers, x, y), Denominator(layers, x, sample)});
    }
};

}  // namespace

RefCntPtr<VQLQuery> VQLRewriteCovariances(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query,
                                          const VQLKeepAggregate& keep) {
    Metrics::Scope scope("VQLRewriteCovariances");
    return RewriteQueries(factory, keep)(query);
}

}  // namespace qve
