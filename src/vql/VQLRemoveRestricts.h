#pragma once

#include "vql/VQLQuery.h"

namespace qve {

/// Takes every restrict out. The evaluator has recorded the columns that the client asked for and restores them at the
/// end, so that no pass in between has to know restricts.
RefCntPtr<VQLQuery> VQLRemoveRestricts(SymbolDictionary& dictionary, const RefCntPtr<VQLQuery>& query);

}  // namespace qve
