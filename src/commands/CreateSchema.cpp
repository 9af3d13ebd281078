#include "commands/CreateSchema.h"

#include "algebra/OperatorVisitor.h"
#include "metrics/Scope.h"

namespace qve {

CreateSchema::CreateSchema(RefCntPtr<Database> database, std::wstring name)
    : m_database(std::move(database)), m_name(std::move(name)) {}

void CreateSchema::Accept(OperatorVisitor& visitor) {
    visitor.VisitCreateSchema(*this);
}

RefCntPtr<Namespace> CreateSchema::Execute(unsigned) {
    Metrics::Scope scope("CreateSchema::Execute");
    m_database->CreateSchema(m_name);
    return nullptr;
}

}  // namespace qve
