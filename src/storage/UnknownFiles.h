#pragma once

#include <string>
#include <vector>

#include "storage/SimpleDatabase.h"

namespace qve {

/// What lies in the root of a database that its catalog does not name, as paths below the root. A directory stands for
/// all that it holds. Names that begin with a point are the system's own and do not count. What another transaction is
/// making is not named yet: call it in one. Throws as the catalog does.
std::vector<std::wstring> FindUnknownFiles(SimpleDatabase& database);

/// Removes those of them that only the system itself can have made: among its own tables' files, files with the
/// extensions of columns, and directories that hold such files or nothing. What users keep in the directory of a
/// database, as texts to import, stays. In a transaction that has made nothing yet. Gives what was removed.
std::vector<std::wstring> RemoveOrphans(SimpleDatabase& database);

}  // namespace qve
