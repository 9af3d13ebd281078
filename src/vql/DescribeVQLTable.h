#pragma once

#include "vql/VQLTable.h"

namespace qve {

class DatabaseSchema;

/// The columns of a table of the catalog with their properties, under the name `name`.
RefCntPtr<VQLTable> DescribeVQLTable(const VQLIdentifier& name, const DatabaseSchema& schema, const std::wstring& table,
                                     SymbolDictionary& dictionary);

}  // namespace qve
