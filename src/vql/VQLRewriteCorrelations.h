#pragma once

#include "vql/VQLQuery.h"

namespace qve {

class VQLIdentifierFactory;

/// Replaces `corr` by sums of products of deviations from the means of the group: the sum of the products of both,
/// divided by the roots of the sums of squares of each. Only pairs count in which both values are present.
/// The query must be checked and its aggregates lowered; the result is not checked.
RefCntPtr<VQLQuery> VQLRewriteCorrelations(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query);

}  // namespace qve
