#pragma once

#include "vql/VQLAggregateRewriter.h"

namespace qve {

class DatabaseFamily;

/// Say of an aggregate that the engine shall compute its quantiles, or its distinct counts, itself: it collects the
/// values of each group, which needs no sort, no second aggregate and no join, but room in memory for all of them.
VQLKeepAggregate CollectsQuantiles(const DatabaseFamily& databases);
VQLKeepAggregate CountsDistinct(const DatabaseFamily& databases);

}  // namespace qve
