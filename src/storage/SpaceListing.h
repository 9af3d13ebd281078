#pragma once

#include <string>
#include <utility>
#include <vector>

#include "storage/TableSpace.h"
#include "types/usrprops.h"

namespace qve {

/// What stands in a space that has no catalog: each directory is a table, each property file in it a column.
class SpaceListing {
public:
    struct Table {
        std::wstring name;
        std::wstring directory;
    };
    struct Column {
        std::wstring name;
        usrprops properties;  // with the file names
    };

    static std::vector<Table> Tables(TableSpace& space);
    /// In the order of their `ordinal`.
    static std::vector<Column> Columns(TableSpace& space, const std::wstring& directory);

    /// A property file in a table's directory, which holds the table's own properties; its `name` where the directory
    /// could not take it.
    static const std::wstring tableFile;
};

}  // namespace qve
