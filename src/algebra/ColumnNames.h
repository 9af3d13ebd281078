#pragma once

#include <boost/container/flat_map.hpp>
#include <boost/container/flat_set.hpp>
#include <string>

#include "system/RefCntPtr.h"

namespace qve {

class Column;

/// The names of a namespace's columns, sorted.
using ColumnNames = boost::container::flat_set<std::wstring>;

/// Columns by name. An entry may hold a null pointer: the name is known, the column not yet made.
using ColumnMap = boost::container::flat_map<std::wstring, RefCntPtr<Column>>;

}  // namespace qve
