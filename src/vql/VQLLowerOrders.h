#pragma once

#include "vql/VQLQuery.h"

namespace qve {

class VQLIdentifierFactory;

/// Makes every sort key of an order or top a plain identifier: other expressions are bound to fresh names in a project
/// under it. The extra columns are dropped where the query's columns are restored. An order that is all identifiers is
/// left as it is.
RefCntPtr<VQLQuery> VQLLowerOrders(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query);

}  // namespace qve
