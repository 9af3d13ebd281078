#pragma once

#include "vql/VQLQuery.h"

namespace qve {

/// Drops each binding of a project that binds a column to its own name, and each project that is left with none.
RefCntPtr<VQLQuery> VQLRemoveTrivialProjectBindings(SymbolDictionary& dictionary, const RefCntPtr<VQLQuery>& query);

}  // namespace qve
