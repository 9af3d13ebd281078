#pragma once

#include <string>

#include "algebra/ColumnNames.h"
#include "types/usrprops.h"

namespace qve {

class Namespace;

/// The properties of the key column `name` of an aggregate of `source` by `keys`, whose groups come in the order of
/// their first rows. `sorted`: equal keys lie side by side in the source, so that the groups are in its order.
usrprops group_key_properties(const Namespace& source, const ColumnNames& keys, const std::wstring& name, bool sorted);

}  // namespace qve
