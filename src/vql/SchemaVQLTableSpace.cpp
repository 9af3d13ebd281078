#include "vql/SchemaVQLTableSpace.h"

#include "storage/DatabaseSchema.h"
#include "system/VQLException.h"
#include "vql/DescribeVQLTable.h"
#include "vql/status.h"

namespace qve {

namespace {

const std::wstring& TableName(const VQLIdentifier& name) {
    if (name.GetComponents().size() != 1)
        throw VQLException(status::VQLTableSpace_BadIdentifier, L"bad identifier (" + name.AsString() + L")");
    return name.GetComponents()[0].AsString();
}

}  // namespace

bool SchemaVQLTableSpace::HasTable(const VQLIdentifier& name) const {
    return m_schema.HasTable(TableName(name));
}

RefCntPtr<VQLTable> SchemaVQLTableSpace::GetTable(const VQLIdentifier& name) const {
    const std::wstring& table = TableName(name);
    if (!m_schema.HasTable(table))
        throw VQLException(status::VQLTableSpace_NoSuchTable, L"no such table " + name.AsString());
    return DescribeVQLTable(name, m_schema, table, m_dictionary);
}

}  // namespace qve
