#pragma once

#include "vql/VQLQuery.h"

namespace qve {

/// Whether the rows of the query come in an order that the client asked for: an order or top stands on its main line.
/// Throws VQLException "Exchange operator not expected".
bool VQLFindRequestedOrder(const RefCntPtr<VQLQuery>& query);

}  // namespace qve
