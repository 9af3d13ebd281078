#pragma once

#include <utility>

#include "vql/VQLAggregateRewriter.h"
#include "vql/VQLSharedBindings.h"

namespace qve {

/// The two-pass form of statistics that are sums of products of deviations from a mean: a first aggregate finds sums
/// and counts, the means are joined back to the rows, and a second aggregate sums the products. Stable for values with
/// a large mean, at the price of a join.
///
/// The names that the functions give are those of columns; what stands over the second aggregate may use the totals.
class VQLDeviations : public VQLAggregateRewriter {
protected:
    /// The layers of one aggregate's rewrite, lowest first. Each is a project or an aggregate over the one before.
    struct Layers {
        explicit Layers(VQLIdentifierFactory& factory)
            : presences(factory),
              values(factory),
              sums(factory),
              means(factory),
              deviations(factory),
              products(factory),
              totals(factory) {}
        VQLSharedBindings presences;   // whether both values of a pair are there
        VQLSharedBindings values;      // what is summed, as doubles
        VQLSharedBindings sums;        // sums and counts by group
        VQLSharedBindings means;       // means and denominators by group
        VQLSharedBindings deviations;  // of each row
        VQLSharedBindings products;    // of two deviations
        VQLSharedBindings totals;      // of products, by group
    };
    /// A value and its deviation from the mean of its group.
    struct Deviation {
        VQLIdentifier value;
        VQLIdentifier deviation;
    };
    using VQLAggregateRewriter::VQLAggregateRewriter;

    RefCntPtr<VQLQuery> Rewrite(RefCntPtr<VQLQuery> input, const VQLBindings& groupBys,
                                const VQLBindings& measures) final;

    /// The result of a measure of the pass's kind, in terms of columns of the second aggregate.
    virtual RefCntPtr<VQLExpression> Result(Layers& layers, const VQLFuncallExpression& measure) const = 0;

    static Deviation DeviationOf(Layers& layers, const RefCntPtr<VQLExpression>& value);
    /// The deviations of two values where both are present.
    static std::pair<Deviation, Deviation> DeviationsOf(Layers& layers, const RefCntPtr<VQLExpression>& x,
                                                        const RefCntPtr<VQLExpression>& y);
    /// The sum over the group of the product of two deviations.
    static RefCntPtr<VQLExpression> SumOfProducts(Layers& layers, const Deviation& a, const Deviation& b);
    /// The number of values in the group, less one for a sample.
    static RefCntPtr<VQLExpression> Denominator(Layers& layers, const Deviation& a, bool sample);

private:
    static Deviation DeviationOfColumn(Layers& layers, const VQLIdentifier& value);
};

}  // namespace qve
