#include "vql/SimpleVQLTableSpace.h"

#include "system/VQLException.h"
#include "vql/status.h"

namespace qve {

SimpleVQLTableSpace::SimpleVQLTableSpace(SymbolDictionary& dictionary, const RefCntPtr<VQLTable>& table)
    : m_dictionary(dictionary) {
    AddTable(table);
}

SimpleVQLTableSpace::SimpleVQLTableSpace(SymbolDictionary& dictionary, Tables tables)
    : m_dictionary(dictionary), m_tables(std::move(tables)) {}

void SimpleVQLTableSpace::AddTable(const RefCntPtr<VQLTable>& table) {
    m_tables[table->GetName()] = table;
}

RefCntPtr<VQLTable> SimpleVQLTableSpace::GetTable(const VQLIdentifier& name) const {
    const auto found = m_tables.find(name);
    if (found == m_tables.end())
        throw VQLException(status::VQLTableSpace_NoSuchTable, L"no such table " + name.AsString());
    return found->second;
}

}  // namespace qve
