#pragma once

#include "vql/VQLAggregateRewriter.h"

namespace qve {

/// Replaces `var` and `varp` by the mean square of the deviations from the mean of the group, in two passes over the
/// input. The variance of a single value is null.
/// The query must be checked and its aggregates lowered; the result is not checked. Aggregates for which `keep` holds
/// stay.
RefCntPtr<VQLQuery> VQLRewriteVariances(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query,
                                        const VQLKeepAggregate& keep = {});

}  // namespace qve
