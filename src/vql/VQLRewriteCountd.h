#pragma once

#include "vql/VQLAggregateRewriter.h"

namespace qve {

/// Replaces `countd` and `collectd` by two aggregates, one over the other: the lower one groups by the group-bys and
/// the counted expression, which leaves each distinct value once, and the upper one counts. Other measures are split
/// between the two. Each distinct expression is counted by a pair of its own, joined on the group-bys.
///
/// The query must be checked and its aggregates lowered; the result is not checked. Aggregates for which `keep` holds
/// stay.
RefCntPtr<VQLQuery> VQLRewriteCountd(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query,
                                     const VQLKeepAggregate& keep = {});

}  // namespace qve
