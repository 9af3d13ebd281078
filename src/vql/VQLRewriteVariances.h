#pragma once

#include "vql/VQLQuery.h"

namespace qve {

class VQLIdentifierFactory;

/// Replaces `var` and `varp` by the mean square of the deviations from the mean of the group, in two passes over the
/// input. The variance of a single value is null.
/// The query must be checked and its aggregates lowered; the result is not checked.
RefCntPtr<VQLQuery> VQLRewriteVariances(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query);

}  // namespace qve
