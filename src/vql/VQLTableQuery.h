#pragma once

#include <string>

#include "vql/VQLColumnMap.h"
#include "vql/VQLQuery.h"

namespace qve {

/// The rows of a stored table.
class VQLTableQuery : public VQLQuery {
public:
    /// `databasePath`: empty for the current database. `columnMap`: from the table's names to those of the output.
    /// `scanColumns`: the output columns that are wanted; empty for all.
    VQLTableQuery(VQLPosition position, VQLIdentifier tableName, std::wstring databasePath = {},
                  VQLColumnMap columnMap = {}, VQLIdentifierSet scanColumns = {}, unsigned parallelism = 1,
                  VQLIdentifierSet clusterNames = {});
    void Accept(VQLQueryVisitor& visitor) override;

    const VQLIdentifier& GetTableName() const { return m_tableName; }
    const std::wstring& GetDatabasePath() const { return m_databasePath; }
    const VQLColumnMap& GetColumnMap() const { return m_columnMap; }
    const VQLIdentifierSet& GetScanColumns() const { return m_scanColumns; }
    /// The number of flows that read the table side by side.
    unsigned GetParallelism() const { return m_parallelism; }
    void SetParallelism(unsigned parallelism) { m_parallelism = parallelism; }
    /// The columns whose equal values stay within one of these flows.
    const VQLIdentifierSet& GetClusterNames() const { return m_clusterNames; }
    void SetClusterNames(VQLIdentifierSet names) { m_clusterNames = std::move(names); }

private:
    VQLIdentifier m_tableName;
    std::wstring m_databasePath;
    VQLColumnMap m_columnMap;
    VQLIdentifierSet m_scanColumns;
    unsigned m_parallelism;
    VQLIdentifierSet m_clusterNames;
};

}  // namespace qve
