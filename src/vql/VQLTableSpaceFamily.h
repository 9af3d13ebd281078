#pragma once

#include <map>
#include <string>
#include <unordered_map>

#include "vql/VQLTableSpace.h"

namespace qve {

class Database;
class VQLTableQuery;
class VQLTextQuery;

/// The table spaces that one query needs, by the path that its leaves name: empty for the current database, a database
/// path, or the path of a text file.
class VQLTableSpaceFamily {
public:
    explicit VQLTableSpaceFamily(SymbolDictionary& dictionary);
    ~VQLTableSpaceFamily();
    VQLTableSpaceFamily(VQLTableSpaceFamily&&) noexcept;

    void AddTableSpace(const RefCntPtr<VQLTable>& table, const std::wstring& path);
    void AddTableSpace(const std::map<VQLIdentifier, RefCntPtr<VQLTable>>& tables, const std::wstring& path);
    void AddTableSpace(const RefCntPtr<Database>& database, const std::wstring& path);
    void AddTableSpace(const RefCntPtr<VQLTableSpace>& space, const std::wstring& path);

    bool HasTableSpace(const std::wstring& path) const { return m_spaces.count(path) != 0; }
    bool HasTable(const std::wstring& path, const VQLIdentifier& name) const;
    bool HasTable(const VQLTableQuery& query) const;
    /// Throw VQLException "no such database (%1)" for a path without a space, and what the space throws.
    RefCntPtr<VQLTable> GetTable(const std::wstring& path, const VQLIdentifier& name) const;
    RefCntPtr<VQLTable> GetTable(const VQLTableQuery& query) const;

    /// The path under which the table space of a text query stands: the same for two queries that read one file in one
    /// way. Its one table has the file's path for a name.
    static std::wstring TextSpacePath(const VQLTextQuery& query);

    SymbolDictionary& GetDictionary() const { return m_dictionary; }

private:
    const VQLTableSpace& GetTableSpace(const std::wstring& path) const;

    SymbolDictionary& m_dictionary;
    std::unordered_map<std::wstring, RefCntPtr<VQLTableSpace>> m_spaces;
};

}  // namespace qve
