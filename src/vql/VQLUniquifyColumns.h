#pragma once

#include "vql/VQLColumnMap.h"
#include "vql/VQLQuery.h"

namespace qve {

class VQLIdentifierFactory;

/// Gives every column that comes up in a scan, binding, import or order a name of its own, so that later passes can
/// move expressions across nodes without one name capturing another. `columns` receives the mapping of the query's
/// output columns to their unique names. The query must be checked; the result is not.
RefCntPtr<VQLQuery> VQLUniquifyColumns(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query,
                                       VQLColumnMap& columns);

/// Takes the unique names back: a name that only one column had becomes its name again. A project on top gives the
/// output columns the names of `columns`, as VQLUniquifyColumns has left it.
RefCntPtr<VQLQuery> VQLDeuniquifyColumns(SymbolDictionary& dictionary, const VQLColumnMap& columns,
                                         const RefCntPtr<VQLQuery>& query);

}  // namespace qve
