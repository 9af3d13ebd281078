#pragma once

#include <vector>

#include "vql/VQLQuery.h"

namespace qve {

/// The output columns in the order in which the client wrote them: group-bys, then measures; a project's input, then
/// its new bindings; a join's left, then its imports; a restrict as listed; a table by the catalog's order. The query
/// must be checked, and still hold its restricts.
std::vector<VQLIdentifier> VQLFindOutputOrder(const RefCntPtr<VQLQuery>& query);

}  // namespace qve
