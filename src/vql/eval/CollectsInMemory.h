#pragma once

#include "vql/VQLAggregateRewriter.h"

namespace qve {

class DatabaseFamily;

/// Says of an aggregate that the engine shall compute its quantiles itself: it collects the values of each group and
/// selects among them, which needs no sort and no join but room in memory for all values.
VQLKeepAggregate CollectsInMemory(const DatabaseFamily& databases);

}  // namespace qve
