#pragma once

#include "vql/VQLAggregateRewriter.h"

namespace qve {

class DatabaseFamily;

/// Say of an aggregate that the engine shall compute its quantiles, its distinct counts, or its variances, covariances
/// and correlations itself: it keeps what they take of each group, which needs no sort, no second aggregate and no
/// join, but room in memory.
VQLKeepAggregate CollectsQuantiles(const DatabaseFamily& databases);
VQLKeepAggregate FindsMoments(const DatabaseFamily& databases);
VQLKeepAggregate CountsDistinct(const DatabaseFamily& databases);

}  // namespace qve
