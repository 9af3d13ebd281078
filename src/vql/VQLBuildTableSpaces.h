#pragma once

#include "vql/VQLTableSpaceFamily.h"

namespace qve {

class DatabaseFamily;
class VQLQuery;

/// The table spaces of all databases and files that a query names. Throws VQLParseException 49000 for a database that
/// the family does not have.
VQLTableSpaceFamily VQLBuildTableSpaces(const RefCntPtr<VQLQuery>& query, DatabaseFamily& databases,
                                        SymbolDictionary& dictionary);

}  // namespace qve
