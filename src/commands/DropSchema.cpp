#include "commands/DropSchema.h"

#include "algebra/OperatorVisitor.h"
#include "metrics/Scope.h"

namespace qve {

DropSchema::DropSchema(RefCntPtr<Database> database, std::wstring name, bool cascade, bool ifexists)
    : m_database(std::move(database)), m_name(std::move(name)), m_cascade(cascade), m_ifexists(ifexists) {}

void DropSchema::Accept(OperatorVisitor& visitor) {
    visitor.VisitDropSchema(*this);
}

RefCntPtr<Namespace> DropSchema::Execute(unsigned) {
    Metrics::Scope scope("DropSchema::Execute");
    m_database->DropSchema(m_name, m_cascade, m_ifexists);
    return nullptr;
}

}  // namespace qve
