#include "storage/DatabaseFamily.h"

#include "os/Path.h"
#include "storage/SimpleDatabase.h"
#include "storage/status.h"
#include "system/VQLException.h"

namespace qve {

DatabaseFamily::DatabaseFamily(RefCntPtr<Database> defaultDatabase) {
    ReplaceDatabase(std::wstring(), std::move(defaultDatabase));
}

RefCntPtr<Database> DatabaseFamily::AddDatabase(const std::wstring& path) {
    RefCntPtr<Database>& database = m_databases[path];
    if (!database) {
        try {
            database = MakeRef<SimpleDatabase>(ResolveDatabasePath(path));
        } catch (...) {
            m_databases.erase(path);
            throw;
        }
    }
    return database;
}

void DatabaseFamily::ReplaceDatabase(const std::wstring& name, RefCntPtr<Database> database) {
    if (database) {
        m_databases[name] = std::move(database);
    } else {
        m_databases.erase(name);
    }
}

RefCntPtr<Database> DatabaseFamily::GetDatabase(const std::wstring& name) const {
    const auto found = m_databases.find(name);
    if (found == m_databases.end()) {
        throw VQLParseException(status::DatabaseFamily_GetDatabase, L"Database '" + name + L"' does not exist", {});
    }
    return found->second;
}

RefCntPtr<Database> DatabaseFamily::GetDefaultDatabase() const {
    const auto found = m_databases.find(std::wstring());
    return found == m_databases.end() ? nullptr : found->second;
}

bool DatabaseFamily::HasDatabase(const std::wstring& name) const {
    return m_databases.count(name) != 0;
}

std::wstring DatabaseFamily::ResolveDatabasePath(const std::wstring& path, const std::wstring& accessPath) {
    std::wstring resolved = Path::normseparators(path);
    if (!Path::isabs(resolved)) {
        if (accessPath.empty()) {
            throw VQLParseException(status::DatabaseFamily_ResolveDatabasePath_relative,
                                    L"Path '" + path + L"' is not absolute", {});
        }
        resolved = Path::join(accessPath, resolved);
    }
    resolved = Path::normpath(resolved);
    if (accessPath.empty()) return resolved;
    // The access path ends with a whole name: "/data" does not open "/database".
    std::wstring allowed = Path::normpath(Path::normseparators(accessPath));
    if (!allowed.ends_with(L'/')) allowed += L'/';
    if ((resolved + L'/').compare(0, allowed.size(), allowed) != 0) {
        throw VQLParseException(status::DatabaseFamily_ResolveDatabasePath_access,
                                L"Path '" + path + L"' is not on database access path", {});
    }
    return resolved;
}

std::wstring DatabaseFamily::ResolveDataFilePath(const std::wstring& path) const {
    const std::wstring file = Path::normseparators(path);
    const auto database = DynamicPtrCast<SimpleDatabase>(GetDefaultDatabase());
    if (database && !Path::isabs(file) && Path::exists(database->GetRoot())) {
        // The root is a plain file when it is a package.
        const std::wstring& root = database->GetRoot();
        const std::wstring joined = Path::join(Path::isfile(root) ? Path::split(root).first : root, file);
        if (Path::isfile(joined)) return ResolveDatabasePath(joined);
    }
    return ResolveDatabasePath(path);
}

}  // namespace qve
