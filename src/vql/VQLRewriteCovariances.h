#pragma once

#include "vql/VQLQuery.h"

namespace qve {

class VQLIdentifierFactory;

/// Replaces `covar` and `covarp` by the mean product of the deviations of two values from their means in the group.
/// Only pairs count in which both values are present.
/// The query must be checked and its aggregates lowered; the result is not checked.
RefCntPtr<VQLQuery> VQLRewriteCovariances(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query);

}  // namespace qve
