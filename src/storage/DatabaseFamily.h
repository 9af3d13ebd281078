#pragma once

#include <string>
#include <unordered_map>

#include "storage/Database.h"
#include "vql/syntax/SymbolDictionary.h"

namespace qve {

/// The databases that a session can reach, by name, and the symbols of its queries against them. The default database
/// stands under the empty name. One thread at a time.
class DatabaseFamily {
public:
    /// @param defaultDatabase null for none
    explicit DatabaseFamily(RefCntPtr<Database> defaultDatabase = nullptr);

    /// The database under the name `path`, opened at that path when there is none yet.
    RefCntPtr<Database> AddDatabase(const std::wstring& path);
    /// Null takes the name out.
    void ReplaceDatabase(const std::wstring& name, RefCntPtr<Database> database);
    /// Throws VQLParseException 49000 for an unknown name.
    RefCntPtr<Database> GetDatabase(const std::wstring& name) const;
    /// Null when there is none.
    RefCntPtr<Database> GetDefaultDatabase() const;
    bool HasDatabase(const std::wstring& name) const;

    /// The absolute, normalised form of a path. A relative one is joined to the access path, and without access path
    /// refused (VQLParseException 49001); a path that leads out of the access path is refused (49002).
    static std::wstring ResolveDatabasePath(const std::wstring& path, const std::wstring& accessPath);
    /// The same with the family's access path.
    std::wstring ResolveDatabasePath(const std::wstring& path) const { return ResolveDatabasePath(path, m_accessPath); }
    /// For files that a statement names: a relative path is tried in the default database's directory first.
    std::wstring ResolveDataFilePath(const std::wstring& path) const;
    /// The directory below which all paths must lie; empty for no restriction.
    void SetAccessPath(const std::wstring& path) { m_accessPath = path; }
    const std::wstring& GetAccessPath() const { return m_accessPath; }

    SymbolDictionary& GetDatabaseSymbols() const { return m_symbols; }

private:
    mutable SymbolDictionary m_symbols;
    std::unordered_map<std::wstring, RefCntPtr<Database>> m_databases;
    std::wstring m_accessPath;
};

}  // namespace qve
