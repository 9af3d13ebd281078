#pragma once

#include "vql/VQLAggregateRewriter.h"

namespace qve {

/// Replaces `covar` and `covarp` by the mean product of the deviations of two values from their means in the group.
/// Only pairs count in which both values are present.
/// The query must be checked and its aggregates lowered; the result is not checked. Aggregates for which `keep` holds
/// stay.
RefCntPtr<VQLQuery> VQLRewriteCovariances(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query,
                                          const VQLKeepAggregate& keep = {});

}  // namespace qve
