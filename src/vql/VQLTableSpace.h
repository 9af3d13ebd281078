#pragma once

#include "vql/VQLTable.h"

namespace qve {

/// Where the checker looks tables up.
class VQLTableSpace : public RefCntObject {
public:
    virtual bool HasTable(const VQLIdentifier& name) const = 0;
    /// Throws VQLException for a name that is no table's.
    virtual RefCntPtr<VQLTable> GetTable(const VQLIdentifier& name) const = 0;
};

}  // namespace qve
