#pragma once

#include "vql/VQLQuery.h"

namespace qve {

class VQLFunctionTable;
class VQLTableSpaceFamily;

/// Marks every aggregate as ordered whose input is sorted by its group-bys, so that equal ones lie side by side, and
/// all others as not ordered. An aggregate without group-bys is never ordered. The query must be checked; the result is
/// not. Throws VQLParseException 49033 "group-bys should be trivial at this point".
RefCntPtr<VQLQuery> VQLMarkOrderedAggregates(const VQLTableSpaceFamily& family, const VQLFunctionTable& functions,
                                             const RefCntPtr<VQLQuery>& query);

}  // namespace qve
