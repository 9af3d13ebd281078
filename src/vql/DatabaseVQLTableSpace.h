#pragma once

#include <map>

#include "vql/VQLTableSpace.h"

namespace qve {

class Database;

/// The tables of a database, by names of two components, schema and table. Described on first use and kept: the checker
/// asks for the same tables after every pass.
class DatabaseVQLTableSpace : public VQLTableSpace {
public:
    DatabaseVQLTableSpace(SymbolDictionary& dictionary, RefCntPtr<Database> database);
    ~DatabaseVQLTableSpace() override;

    /// Both throw VQLException "bad identifier (%1)" unless the name has two components.
    bool HasTable(const VQLIdentifier& name) const override;
    /// Throws VQLException "no such schema (%1)" and "no such table %1".
    RefCntPtr<VQLTable> GetTable(const VQLIdentifier& name) const override;

private:
    SymbolDictionary& m_dictionary;
    RefCntPtr<Database> m_database;
    mutable std::map<VQLIdentifier, RefCntPtr<VQLTable>> m_tables;
};

}  // namespace qve
