#pragma once

#include <map>

#include "vql/VQLTableSpace.h"

namespace qve {

/// Tables given one by one.
class SimpleVQLTableSpace : public VQLTableSpace {
public:
    using Tables = std::map<VQLIdentifier, RefCntPtr<VQLTable>>;

    explicit SimpleVQLTableSpace(SymbolDictionary& dictionary) : m_dictionary(dictionary) {}
    SimpleVQLTableSpace(SymbolDictionary& dictionary, const RefCntPtr<VQLTable>& table);
    SimpleVQLTableSpace(SymbolDictionary& dictionary, Tables tables);

    void AddTable(const RefCntPtr<VQLTable>& table);
    bool HasTable(const VQLIdentifier& name) const override { return m_tables.count(name) != 0; }
    /// Throws VQLException "no such table %1".
    RefCntPtr<VQLTable> GetTable(const VQLIdentifier& name) const override;
    SymbolDictionary& GetDictionary() const { return m_dictionary; }

private:
    SymbolDictionary& m_dictionary;
    Tables m_tables;
};

}  // namespace qve
