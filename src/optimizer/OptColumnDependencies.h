#pragma once

#include "vql/VQLJoinQuery.h"
#include "vql/VQLQuery.h"

namespace qve {

/// The columns of its input or inputs that a query node reads in its own expressions; inputs are not walked.
VQLIdentifierSet OptDeriveColumnDependencies(const RefCntPtr<VQLQuery>& query);
/// The columns of one side that a join reads: in the left conditions; in the right conditions and the imports.
VQLIdentifierSet OptDeriveJoinLeftColumnDependencies(const VQLJoinQuery& join);
VQLIdentifierSet OptDeriveJoinRightColumnDependencies(const VQLJoinQuery& join);

}  // namespace qve
