#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "types/datetime.h"

namespace qve {

/// Walks over what lies in a folder. An entry that vanishes meanwhile is passed over.
class FolderWalk {
public:
    struct Entry {
        std::wstring name;  // the path below the folder
        bool directory;
        uint64_t size;      // bytes; of a file
        datetime modified;  // UTC
    };

    /// The entries of a folder, sorted by name; with `cascade`, also those of its folders.
    static std::vector<Entry> List(const std::wstring& folder, bool cascade);
    /// The bytes of all files in a folder and its folders.
    static uint64_t TotalSize(const std::wstring& folder);
    /// Whether a folder is a database, or a file a packaged one.
    static bool IsDatabase(const std::wstring& path);
};

}  // namespace qve
