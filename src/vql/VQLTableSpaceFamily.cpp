#include "vql/VQLTableSpaceFamily.h"

#include <sstream>

#include "storage/Database.h"
#include "system/VQLException.h"
#include "vql/DatabaseVQLTableSpace.h"
#include "vql/SimpleVQLTableSpace.h"
#include "vql/VQLTableQuery.h"
#include "vql/VQLTextQuery.h"
#include "vql/status.h"

namespace qve {

VQLTableSpaceFamily::VQLTableSpaceFamily(SymbolDictionary& dictionary) : m_dictionary(dictionary) {}
VQLTableSpaceFamily::~VQLTableSpaceFamily() = default;
VQLTableSpaceFamily::VQLTableSpaceFamily(VQLTableSpaceFamily&&) noexcept = default;

void VQLTableSpaceFamily::AddTableSpace(const RefCntPtr<VQLTable>& table, const std::wstring& path) {
    AddTableSpace(RefCntPtr<VQLTableSpace>(MakeRef<SimpleVQLTableSpace>(m_dictionary, table)), path);
}

void VQLTableSpaceFamily::AddTableSpace(const std::map<VQLIdentifier, RefCntPtr<VQLTable>>& tables,
                                        const std::wstring& path) {
    AddTableSpace(RefCntPtr<VQLTableSpace>(MakeRef<SimpleVQLTableSpace>(m_dictionary, tables)), path);
}

void VQLTableSpaceFamily::AddTableSpace(const RefCntPtr<Database>& database, const std::wstring& path) {
    AddTableSpace(RefCntPtr<VQLTableSpace>(MakeRef<DatabaseVQLTableSpace>(m_dictionary, database)), path);
}

void VQLTableSpaceFamily::AddTableSpace(const RefCntPtr<VQLTableSpace>& space, const std::wstring& path) {
    m_spaces[path] = space;
}

bool VQLTableSpaceFamily::HasTable(const std::wstring& path, const VQLIdentifier& name) const {
    return GetTableSpace(path).HasTable(name);
}

bool VQLTableSpaceFamily::HasTable(const VQLTableQuery& query) const {
    return HasTable(query.GetDatabasePath(), query.GetTableName());
}

RefCntPtr<VQLTable> VQLTableSpaceFamily::GetTable(const std::wstring& path, const VQLIdentifier& name) const {
    return GetTableSpace(path).GetTable(name);
}

RefCntPtr<VQLTable> VQLTableSpaceFamily::GetTable(const VQLTableQuery& query) const {
    return GetTable(query.GetDatabasePath(), query.GetTableName());
}

std::wstring VQLTableSpaceFamily::TextSpacePath(const VQLTextQuery& query) {
    // A line feed keeps these apart from the paths of databases.
    std::wostringstream path;
    path << L"text\n" << query.GetPath() << L'\n' << query.GetTextProperties();
    for (const usrprops& column : query.GetSchema()) path << L'\n' << column;
    return path.str();
}

const VQLTableSpace& VQLTableSpaceFamily::GetTableSpace(const std::wstring& path) const {
    const auto found = m_spaces.find(path);
    if (found == m_spaces.end())
        throw VQLException(status::VQLTableSpaceFamily_GetTable, L"no such database (" + path + L")");
    return *found->second;
}

}  // namespace qve
