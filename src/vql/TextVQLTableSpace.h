#pragma once

#include <string>
#include <vector>

#include "types/usrprops.h"
#include "vql/VQLTableSpace.h"

namespace qve {

class SymbolDictionary;

/// The one table of a text file. Its columns are found out by a scan of the file's first records, once.
class TextVQLTableSpace : public VQLTableSpace {
public:
    /// `path` is where the file lies; `schema` and `properties` are those of a text query.
    TextVQLTableSpace(SymbolDictionary& dictionary, std::wstring path, std::vector<usrprops> schema,
                      usrprops properties);
    bool HasTable(const VQLIdentifier& name) const override;
    /// Throws what TextScan throws.
    RefCntPtr<VQLTable> GetTable(const VQLIdentifier& name) const override;

private:
    SymbolDictionary& m_dictionary;
    const std::wstring m_path;
    const std::vector<usrprops> m_schema;
    const usrprops m_properties;
    mutable RefCntPtr<VQLTable> m_table;
};

}  // namespace qve
