#pragma once

#include "storage/Database.h"
#include "storage/MetadataTable.h"

namespace qve {

/// The whole catalog in memory. A value type: a transaction works on a copy.
struct Catalog {
    MetadataTable schemas{Database::tableSchemas};
    MetadataTable tables{Database::tableTables};
    MetadataTable columns{Database::tableColumns};
    bool whole = true;  ///< no row of its files had to be left out
};

}  // namespace qve
