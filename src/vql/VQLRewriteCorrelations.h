#pragma once

#include "vql/VQLAggregateRewriter.h"

namespace qve {

/// Replaces `corr` by sums of products of deviations from the means of the group: the sum of the products of both,
/// divided by the roots of the sums of squares of each. Only pairs count in which both values are present.
/// The query must be checked and its aggregates lowered; the result is not checked. Aggregates for which `keep` holds
/// stay.
RefCntPtr<VQLQuery> VQLRewriteCorrelations(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query,
                                           const VQLKeepAggregate& keep = {});

}  // namespace qve
