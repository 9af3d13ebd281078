#include "commands/ShowSchemas.h"

#include "algebra/OperatorVisitor.h"
#include "commands/Listing.h"

namespace qve {

ShowSchemas::ShowSchemas(RefCntPtr<Database> database) : m_database(std::move(database)) {}

void ShowSchemas::Accept(OperatorVisitor& visitor) {
    visitor.VisitShowSchemas(*this);
}

RefCntPtr<Namespace> ShowSchemas::Execute(unsigned) {
    Listing listing(L"SCHEMAS");
    listing.AddTexts(L"NAME", m_database->GetSchemaNames());
    return listing.Finish();
}

}  // namespace qve
