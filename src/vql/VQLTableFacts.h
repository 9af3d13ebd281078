#pragma once

#include "vql/VQLColumnMap.h"
#include "vql/VQLDerivedFacts.h"

namespace qve {

/// What the catalog's properties tell of a table's rows, under the table's own column names: the columns `unique` and
/// those that make up the `primary-key` are keys; `sort-position` and `sort-sense`, and `ordered`, give orderings.
VQLDerivedFacts VQLTableFacts(const VQLColumnSpace& table);

}  // namespace qve
