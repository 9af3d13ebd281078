#pragma once

#include <string>

#include "vql/VQLColumnMap.h"
#include "vql/VQLQuery.h"

namespace qve {

/// The distinct values in the dictionary of a compressed column: one row for each, in one column of that name.
class VQLDomainQuery : public VQLQuery {
public:
    /// `qualifiedColumnName`: table and column, the table as in VQLTableQuery.
    VQLDomainQuery(VQLPosition position, VQLIdentifier qualifiedColumnName, std::wstring databasePath = {},
                   VQLColumnMap columnMap = {}, VQLIdentifierSet scanColumns = {}, unsigned parallelism = 1,
                   VQLIdentifierSet clusterNames = {});
    void Accept(VQLQueryVisitor& visitor) override;

    const VQLIdentifier& GetQualifiedColumnName() const { return m_qualifiedColumnName; }
    /// The last component of the qualified name.
    const VQLIdentifier& GetColumnName() const { return m_columnName; }
    /// The qualified name without its last component.
    const VQLIdentifier& GetTableName() const { return m_tableName; }
    const std::wstring& GetDatabasePath() const { return m_databasePath; }
    const VQLColumnMap& GetColumnMap() const { return m_columnMap; }
    const VQLIdentifierSet& GetScanColumns() const { return m_scanColumns; }
    unsigned GetParallelism() const { return m_parallelism; }
    void SetParallelism(unsigned parallelism) { m_parallelism = parallelism; }
    const VQLIdentifierSet& GetClusterNames() const { return m_clusterNames; }
    void SetClusterNames(VQLIdentifierSet names) { m_clusterNames = std::move(names); }

private:
    VQLIdentifier m_qualifiedColumnName;
    VQLIdentifier m_columnName;
    VQLIdentifier m_tableName;
    std::wstring m_databasePath;
    VQLColumnMap m_columnMap;
    VQLIdentifierSet m_scanColumns;
    unsigned m_parallelism;
    VQLIdentifierSet m_clusterNames;
};

}  // namespace qve
