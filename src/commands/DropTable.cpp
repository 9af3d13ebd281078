#include "commands/DropTable.h"

#include "algebra/OperatorVisitor.h"
#include "metrics/Scope.h"

namespace qve {

DropTable::DropTable(RefCntPtr<Database> database, std::wstring schema, std::wstring name, bool cascade, bool ifexists)
    : m_database(std::move(database)),
      m_schema(std::move(schema)),
      m_name(std::move(name)),
      m_cascade(cascade),
      m_ifexists(ifexists) {}

void DropTable::Accept(OperatorVisitor& visitor) {
    visitor.VisitDropTable(*this);
}

RefCntPtr<Namespace> DropTable::Execute(unsigned) {
    Metrics::Scope scope("DropTable::Execute");
    m_database->DropTable(m_name, m_schema, m_cascade, m_ifexists);
    return nullptr;
}

}  // namespace qve
