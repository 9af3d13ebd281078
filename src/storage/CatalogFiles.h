#pragma once

#include <string>
#include <utility>
#include <vector>

#include "storage/Catalog.h"
#include "storage/CatalogJournal.h"
#include "storage/TableSpace.h"

namespace qve {

/// One system table with its columns, in order.
struct SystemTable {
    std::wstring name;
    std::vector<std::wstring> columns;
};

/// The tables of the catalog, in order.
const std::vector<SystemTable>& SystemTables();
/// The properties of a system column by its name, "ID" and so on.
usrprops SystemColumnProperties(const std::wstring& column);

/// Lays out the schema "SYS" of a new database and fills it. `catalog` receives the catalog's own rows.
void InitialiseSystemSchema(TableSpace& space, Catalog& catalog);

/// Reads the catalog from the columns of "SYS". Throws QVE_RuntimeError (status::SimpleDatabase_LoadCatalog) when they
/// contradict each other or hold what no catalog holds.
Catalog ReadCatalog(TableSpace& space);

/// Writes the tables of the catalog that changed into new files, beside those that they will replace: a list of the
/// renames to be made, from and to. `suffix` tells the new files from all others; they are noted in the journal.
std::vector<std::pair<std::wstring, std::wstring>> WriteCatalog(TableSpace& space, CatalogJournal& journal,
                                                                const Catalog& catalog, const std::wstring& suffix);

/// Cuts the file behind a stream to the stream's size: files grow in steps, and who opens one takes its length for its
/// size. The stream and its forks must be released; nothing where the space keeps exact sizes.
void TrimFile(TableSpace& space, const std::wstring& path, uint64_t size);

}  // namespace qve
