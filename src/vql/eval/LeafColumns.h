#pragma once

#include <string>
#include <utility>
#include <vector>

#include "algebra/ColumnNames.h"
#include "system/RefCntPtr.h"
#include "vql/VQLQuery.h"

namespace qve {

class DataFlow;
class VQLColumnMap;
class VQLDomainQuery;
class VQLIndexTableQuery;
class VQLTableQuery;
class VQLTextQuery;

/// The last components of names.
ColumnNames ColumnNamesOf(const VQLIdentifierSet& names);

/// The wanted columns of a leaf by the names under which they are stored and by those that they have in the query.
struct LeafColumns {
    explicit LeafColumns(const VQLTableQuery& query);
    explicit LeafColumns(const VQLTextQuery& query);
    explicit LeafColumns(const VQLDomainQuery& query);
    explicit LeafColumns(const VQLIndexTableQuery& query);

    /// Whether no name differs.
    bool IsTrivial() const { return renames.empty(); }
    /// A flow of the stored columns under the names of the query.
    RefCntPtr<DataFlow> Apply(RefCntPtr<DataFlow> flow) const;
    /// The stored name of a column of the query.
    const std::wstring& GetStored(const std::wstring& name) const;

    ColumnNames shown;
    ColumnNames stored;
    std::vector<std::pair<std::wstring, std::wstring>> renames;  ///< stored name, name in the query

private:
    LeafColumns(const VQLIdentifierSet& scanned, const VQLColumnMap& columns);
};

}  // namespace qve
