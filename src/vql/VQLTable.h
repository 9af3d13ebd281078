#pragma once

#include "vql/VQLColumnSpace.h"

namespace qve {

/// What the checker knows of a table: its name and its columns with their catalog properties.
class VQLTable : public RefCntObject {
public:
    VQLTable(VQLIdentifier name, RefCntPtr<VQLColumnSpace> columnSpace)
        : m_name(std::move(name)), m_columnSpace(std::move(columnSpace)) {}
    const VQLIdentifier& GetName() const { return m_name; }
    const RefCntPtr<VQLColumnSpace>& GetColumnSpace() const { return m_columnSpace; }

private:
    VQLIdentifier m_name;
    RefCntPtr<VQLColumnSpace> m_columnSpace;
};

}  // namespace qve
