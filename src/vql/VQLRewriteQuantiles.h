#pragma once

#include "vql/VQLAggregateRewriter.h"

namespace qve {

/// Replaces `quantile` by the linear interpolation at position (n - 1) q among the n values of the group that are not
/// null. The input is sorted by the group-bys and the value with the row number beside it; first row and number of
/// values of each group give the numbers of the two neighbouring rows, which are found by a join and an `anyif` each.
///
/// The query must be checked and its aggregates lowered; the result is not checked. Aggregates for which `keep` holds
/// stay. Throws VQLParseException 49011 when q is no literal number.
RefCntPtr<VQLQuery> VQLRewriteQuantiles(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query,
                                        const VQLKeepAggregate& keep = {});

/// The q of a `quantile` call. Throws VQLParseException 49011 when it is no literal number. A null gives NaN.
double VQLQuantileFraction(const VQLFuncallExpression& quantile);

}  // namespace qve
