#include "commands/ShowVirtualTable.h"

#include "algebra/LeafTable.h"
#include "algebra/OperatorVisitor.h"
#include "storage/DatabaseSchema.h"

namespace qve {

const std::wstring ShowVirtualTable::schemaSession = L".SESSION";
const std::wstring ShowVirtualTable::tableSessions = L"SESSIONS";
const std::wstring ShowVirtualTable::tableRuntimeQueryStats = L"RUNTIMEQUERYSTATS";

ShowVirtualTable::ShowVirtualTable(RefCntPtr<Database> database, std::wstring table)
    : m_database(std::move(database)), m_table(std::move(table)) {}

void ShowVirtualTable::Accept(OperatorVisitor& visitor) {
    visitor.VisitShowVirtualTable(*this);
}

RefCntPtr<Namespace> ShowVirtualTable::Execute(unsigned) {
    return MakeRef<LeafTable>(*m_database->GetSchema(schemaSession), m_table);
}

}  // namespace qve
