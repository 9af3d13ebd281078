#pragma once

#include "vql/VQLQuery.h"

namespace qve {

class VQLIdentifierFactory;

/// Makes each join condition a pair of plain identifiers, and each import one: other expressions are bound to fresh
/// names in a project under the join on their side. A join that needs nothing of it is left as it is.
RefCntPtr<VQLQuery> VQLLowerJoins(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query);

}  // namespace qve
