#pragma once

#include <string>

#include "vql/VQLColumnMap.h"
#include "vql/VQLQuery.h"

namespace qve {

/// The runs of a run-length encoded column: a row for each, with its value, first row and length.
class VQLIndexTableQuery : public VQLQuery {
public:
    /// Forms the names of the start and count columns from that of the run-length column.
    VQLIndexTableQuery(VQLPosition position, VQLIdentifier tableName, std::wstring databasePath,
                       VQLIdentifier rleColumnName, SymbolDictionary& dictionary, VQLColumnMap columnMap = {},
                       unsigned parallelism = 1, VQLIdentifierSet clusterNames = {});
    void Accept(VQLQueryVisitor& visitor) override;

    const VQLIdentifier& GetTableName() const { return m_tableName; }
    const std::wstring& GetDatabasePath() const { return m_databasePath; }
    const VQLIdentifier& GetRLEColumnName() const { return m_rleColumnName; }
    const VQLIdentifier& GetStartColumnName() const { return m_startColumnName; }
    const VQLIdentifier& GetCountColumnName() const { return m_countColumnName; }
    const VQLColumnMap& GetColumnMap() const { return m_columnMap; }
    unsigned GetParallelism() const { return m_parallelism; }
    void SetParallelism(unsigned parallelism) { m_parallelism = parallelism; }
    const VQLIdentifierSet& GetClusterNames() const { return m_clusterNames; }
    void SetClusterNames(VQLIdentifierSet names) { m_clusterNames = std::move(names); }

private:
    VQLIdentifier m_tableName;
    std::wstring m_databasePath;
    VQLIdentifier m_rleColumnName;
    VQLIdentifier m_startColumnName;
    VQLIdentifier m_countColumnName;
    VQLColumnMap m_columnMap;
    unsigned m_parallelism;
    VQLIdentifierSet m_clusterNames;
};

}  // namespace qve
