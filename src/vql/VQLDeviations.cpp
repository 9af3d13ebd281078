#include "vql/VQLDeviations.h"

#include "vql/VQLExpressions.h"

namespace qve {
namespace {

RefCntPtr<VQLExpression> Null() {
    return MakeRef<VQLLiteralExpression>(VQLPosition(), VQLDataValue());
}

}  // namespace

VQLDeviations::Deviation VQLDeviations::DeviationOfColumn(Layers& layers, const VQLIdentifier& value) {
    const VQLIdentifier sum = layers.sums.NameOf(Call(L"sum", {Column(value)}));
    const VQLIdentifier count = layers.sums.NameOf(Call(L"count", {Column(value)}));
    const VQLIdentifier mean = layers.means.NameOf(Call(L"/", {Column(sum), Column(count)}));
    return {value, layers.deviations.NameOf(Call(L"-", {Column(value), Column(mean)}))};
}

VQLDeviations::Deviation VQLDeviations::DeviationOf(Layers& layers, const RefCntPtr<VQLExpression>& value) {
    const auto* column = dynamic_cast<const VQLIdentifierExpression*>(value.get());
    // Integers are summed as doubles, whose sums do not overflow.
    const bool asItStands = column && value->GetDataType() != VQLDataType::integer;
    return DeviationOfColumn(layers,
                             asItStands ? column->GetIdentifier() : layers.values.NameOf(Call(L"to_real", {value})));
}

std::pair<VQLDeviations::Deviation, VQLDeviations::Deviation> VQLDeviations::DeviationsOf(
    Layers& layers, const RefCntPtr<VQLExpression>& x, const RefCntPtr<VQLExpression>& y) {
    const auto present = [](const RefCntPtr<VQLExpression>& value) { return Call(L"not", {Call(L"isnull", {value})}); };
    const VQLIdentifier both = layers.presences.NameOf(Call(L"and", {present(x), present(y)}));
    const auto masked = [&](const RefCntPtr<VQLExpression>& value) {
        const RefCntPtr<VQLExpression> real =
            value->GetDataType() == VQLDataType::integer ? Call(L"to_real", {value}) : value;
        return DeviationOfColumn(layers, layers.values.NameOf(MakeRef<VQLCaseExpression>(
                                             VQLPosition(), VQLExpressions{Column(both), real, Null()})));
    };
    Deviation ofX = masked(x);
    return {std::move(ofX), masked(y)};
}

RefCntPtr<VQLExpression> VQLDeviations::SumOfProducts(Layers& layers, const Deviation& a, const Deviation& b) {
    const VQLIdentifier product = layers.products.NameOf(Call(L"*", {Column(a.deviation), Column(b.deviation)}));
    return Column(layers.totals.NameOf(Call(L"sum", {Column(product)})));
}

RefCntPtr<VQLExpression> VQLDeviations::Denominator(Layers& layers, const Deviation& a, bool sample) {
    const RefCntPtr<VQLExpression> count = Column(layers.sums.NameOf(Call(L"count", {Column(a.value)})));
    const VQLIdentifier denominator = layers.means.NameOf(sample ? Call(L"-", {count, Number(1)}) : count);
    // All rows of a group have the same one.
    return Column(layers.totals.NameOf(Call(L"min", {Column(denominator)})));
}

RefCntPtr<VQLQuery> VQLDeviations::Rewrite(RefCntPtr<VQLQuery> input, const VQLBindings& groupBys,
                                           const VQLBindings& measures) {
    Layers layers(GetFactory());
    VQLBindings results, others;
    for (const VQLBinding& measure : measures) {
        if (IsOfKind(measure)) {
            results.emplace_back(measure.first, Result(layers, CallOf(measure)));
        } else {
            others.push_back(measure);
        }
    }
    const RefCntPtr<VQLQuery> rows = Project(Project(std::move(input), layers.presences.Get()), layers.values.Get());
    RefCntPtr<VQLQuery> means = Project(Aggregate(rows, groupBys, layers.sums.Get()), layers.means.Get());
    RefCntPtr<VQLQuery> joined = JoinGroups(rows, std::move(means), groupBys, layers.means.Get());
    RefCntPtr<VQLQuery> products = Project(Project(std::move(joined), layers.deviations.Get()), layers.products.Get());
    others.insert(others.end(), layers.totals.Get().begin(), layers.totals.Get().end());
    return Project(Aggregate(std::move(products), groupBys, std::move(others)), std::move(results));
}

}  // namespace qve
