#pragma once

#include "vql/VQLColumnSpace.h"
#include "vql/VQLQuery.h"

namespace qve {

class VQLTableSpaceFamily;

/// Narrows every scan to the columns that are used above it, when `columnSpace` is what is wanted of the whole, and
/// drops bindings, measures and imports that nobody reads. With `exact` a restrict goes over each input that still
/// yields more than is wanted. The query must be checked; the result is not. Throws VQLException "wanted column not
/// present in input".
RefCntPtr<VQLQuery> VQLRestrictScans(const VQLTableSpaceFamily& family, const VQLColumnSpace& columnSpace, bool exact,
                                     const RefCntPtr<VQLQuery>& query);

/// Puts a restrict on the columns of `columnSpace`, in the order of their names, over a query.
RefCntPtr<VQLQuery> RestrictQuery(const VQLColumnSpace& columnSpace, const RefCntPtr<VQLQuery>& query);

}  // namespace qve
