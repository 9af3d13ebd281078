#pragma once

#include "vql/VQLQuery.h"

namespace qve {

/// Gives each null of unknown type the type that the checker found for it. The query must be checked; the result is
/// not.
RefCntPtr<VQLQuery> VQLPushDownNullTypes(SymbolDictionary& dictionary, const RefCntPtr<VQLQuery>& query);

}  // namespace qve
