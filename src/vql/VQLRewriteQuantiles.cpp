#include "vql/VQLRewriteQuantiles.h"

#include <cmath>
#include <limits>

#include "metrics/Scope.h"
#include "vql/VQLExpressionComparator.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLSharedBindings.h"
#include "vql/status.h"
#include "vql/syntax/VQLIdentifierFactory.h"

namespace qve {
namespace {

// The columns that the quantiles of one value share.
struct QuantileColumns {
    RefCntPtr<VQLExpression> value;
    VQLIdentifier row;    // the number of each row in the order by group-bys and value
    VQLIdentifier first;  // the number of the first row of the group whose value is not null
    VQLIdentifier count;  // of the values of the group
};

class RewriteQueries : public VQLAggregateRewriter {
public:
    RewriteQueries(VQLIdentifierFactory& factory, const VQLKeepAggregate& keep)
        : VQLAggregateRewriter(factory, {L"quantile"}, keep) {}

private:
    RefCntPtr<VQLQuery> Rewrite(RefCntPtr<VQLQuery> input, const VQLBindings& groupBys,
                                const VQLBindings& measures) override {
        VQLIdentifierFactory& factory = GetFactory();
        std::vector<QuantileColumns> values;
        VQLSharedBindings lasts(factory), firsts(factory), offsets(factory), bounds(factory), hits(factory),
            found(factory);
        VQLBindings results, others;
        for (const VQLBinding& measure : measures) {
            if (!IsOfKind(measure)) {
                others.push_back(measure);
                continue;
            }
            const VQLFuncallExpression& call = CallOf(measure);
            const QuantileColumns& x = ColumnsOf(call.GetArguments()[0], values, lasts, firsts);
            const VQLIdentifier p =
                offsets.NameOf(Call(L"*", {Call(L"-", {Column(x.count), Number(1)}), Fraction(call)}));
            const auto rowAt = [&](const wchar_t* rounding) {
                return bounds.NameOf(Call(L"+", {Column(x.first), Call(rounding, {Column(p)})}));
            };
            const auto valueAt = [&](const VQLIdentifier& bound) {
                const VQLIdentifier hit = hits.NameOf(Call(L"=", {Column(x.row), Column(bound)}));
                return Column(found.NameOf(Call(L"anyif", {x.value, Column(hit)})));
            };
            const RefCntPtr<VQLExpression> low = valueAt(rowAt(L"floor"));
            const RefCntPtr<VQLExpression> high = valueAt(rowAt(L"ceil"));
            const VQLIdentifier part = bounds.NameOf(Call(L"-", {Column(p), Call(L"floor", {Column(p)})}));
            const RefCntPtr<VQLExpression> carried = Column(found.NameOf(Call(L"any", {Column(part)})));
            results.emplace_back(measure.first, Call(L"+", {low, Call(L"*", {Call(L"-", {high, low}), carried})}));
        }

        for (const QuantileColumns& x : values) input = Sort(std::move(input), groupBys, x);
        RefCntPtr<VQLQuery> ranks = Project(Aggregate(input, groupBys, lasts.Get()), firsts.Get());
        ranks = Project(Project(std::move(ranks), offsets.Get()), bounds.Get());
        RefCntPtr<VQLQuery> joined = JoinGroups(std::move(input), std::move(ranks), groupBys, bounds.Get());
        others.insert(others.end(), found.Get().begin(), found.Get().end());
        return Project(Aggregate(Project(std::move(joined), hits.Get()), groupBys, std::move(others)),
                       std::move(results));
    }

    const QuantileColumns& ColumnsOf(const RefCntPtr<VQLExpression>& value, std::vector<QuantileColumns>& values,
                                     VQLSharedBindings& lasts, VQLSharedBindings& firsts) const {
        for (const QuantileColumns& known : values)
            if (VQLExpressionComparator()(known.value, value) == 0) return known;
        QuantileColumns columns{value, GetFactory()(L"row"), {}, {}};
        // Nulls sort before all values, so the values of a group are its last rows.
        const VQLIdentifier last = lasts.NameOf(Call(L"max", {Column(columns.row)}));
        columns.count = lasts.NameOf(Call(L"count", {value}));
        columns.first = firsts.NameOf(Call(L"-", {Call(L"+", {Column(last), Number(1)}), Column(columns.count)}));
        return values.emplace_back(std::move(columns));
    }

    static RefCntPtr<VQLExpression> Fraction(const VQLFuncallExpression& quantile) {
        const double fraction = VQLQuantileFraction(quantile);
        return MakeRef<VQLLiteralExpression>(
            VQLPosition(), std::isnan(fraction) ? VQLDataValue::Null(VQLDataType::double_) : VQLDataValue(fraction));
    }

    static RefCntPtr<VQLQuery> Sort(RefCntPtr<VQLQuery> input, const VQLBindings& groupBys, const QuantileColumns& x) {
        VQLOrderQuery::Orders orders;
        for (const auto& [name, expression] : groupBys) orders.push_back({Column(name), VQLSortSense::ascending, {}});
        orders.push_back({x.value, VQLSortSense::ascending, x.row});
        return MakeRef<VQLOrderQuery>(VQLPosition(), std::move(input), std::move(orders));
    }
};

}  // namespace

double VQLQuantileFraction(const VQLFuncallExpression& quantile) {
    const RefCntPtr<VQLExpression>& argument = quantile.GetArguments()[1];
    const auto* literal = dynamic_cast<const VQLLiteralExpression*>(argument.get());
    const VQLDataType type = argument->GetDataType();
    if (!literal || (type != VQLDataType::integer && type != VQLDataType::double_)) {
        throw VQLParseException(status::VQLRewriteQuantiles_Literal, L"quantile needs a number as its second argument",
                                quantile.GetPosition());
    }
    const VQLDataValue& value = literal->GetLiteral();
    if (value.IsNull()) return std::numeric_limits<double>::quiet_NaN();
    return type == VQLDataType::integer ? static_cast<double>(value.GetInteger()) : value.GetDouble();
}

RefCntPtr<VQLQuery> VQLRewriteQuantiles(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query,
                                        const VQLKeepAggregate& keep) {
    Metrics::Scope scope("VQLRewriteQuantiles");
    return RewriteQueries(factory, keep)(query);
}

}  // namespace qve
