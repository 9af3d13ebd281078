#pragma once

#include <vector>

#include "vql/VQLColumn.h"

namespace qve {

/// The set of columns that a query yields, sorted and searched by name.
class VQLColumnSpace : public RefCntObject {
public:
    using Columns = std::vector<RefCntPtr<VQLColumn>>;

    VQLColumnSpace() = default;
    /// A space of these columns; of two with one name the later stays.
    explicit VQLColumnSpace(Columns columns);

    /// Replaces the column of the same name if there is one.
    void AddColumn(RefCntPtr<VQLColumn> column);
    bool HasColumn(const VQLIdentifier& name) const;
    /// Throws VQLException "no such column %1".
    const RefCntPtr<VQLColumn>& GetColumn(const VQLIdentifier& name) const;
    /// Null when there is no such column.
    VQLColumn* FindColumn(const VQLIdentifier& name) const;
    /// In the order of names.
    const Columns& GetColumns() const { return m_columns; }

private:
    Columns::const_iterator Find(const VQLIdentifier& name) const;

    Columns m_columns;
};

}  // namespace qve
