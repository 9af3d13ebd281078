#pragma once

#include "vql/VQLTableSpace.h"

namespace qve {

class DatabaseSchema;

/// The tables of one schema, by names of one component. Each table is described when it is asked for.
class SchemaVQLTableSpace : public VQLTableSpace {
public:
    /// Both must outlive the space.
    SchemaVQLTableSpace(SymbolDictionary& dictionary, DatabaseSchema& schema)
        : m_dictionary(dictionary), m_schema(schema) {}

    /// Both throw VQLException "bad identifier (%1)" unless the name has one component.
    bool HasTable(const VQLIdentifier& name) const override;
    /// Throws VQLException "no such table %1".
    RefCntPtr<VQLTable> GetTable(const VQLIdentifier& name) const override;

private:
    SymbolDictionary& m_dictionary;
    DatabaseSchema& m_schema;
};

}  // namespace qve
