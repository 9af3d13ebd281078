#include "commands/CreateDatabase.h"

#include "algebra/OperatorVisitor.h"

namespace qve {

CreateDatabase::CreateDatabase(RefCntPtr<Database> database, RefCntPtr<ProgressCallback> progress)
    : m_database(std::move(database)), m_progress(std::move(progress)) {}

void CreateDatabase::Accept(OperatorVisitor& visitor) {
    visitor.VisitCreateDatabase(*this);
}

RefCntPtr<Namespace> CreateDatabase::Execute(unsigned) {
    return nullptr;
}

}  // namespace qve
