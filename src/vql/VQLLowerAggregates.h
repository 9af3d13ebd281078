#pragma once

#include "vql/VQLQuery.h"

namespace qve {

class VQLIdentifierFactory;

/// Splits every aggregate in three: a project under it computes group-bys and arguments of aggregate functions that are
/// more than a column, the aggregate itself holds only calls of aggregate functions on columns and literals, and a
/// project over it computes what is left of the measures and gives all outputs their names. Equal calls and equal
/// arguments are computed once. The query must be checked; the result is not.
RefCntPtr<VQLQuery> VQLLowerAggregates(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query);

}  // namespace qve
