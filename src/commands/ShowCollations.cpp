#include "commands/ShowCollations.h"

#include "algebra/OperatorVisitor.h"
#include "commands/Listing.h"
#include "types/collation.h"

namespace qve {

void ShowCollations::Accept(OperatorVisitor& visitor) {
    visitor.VisitShowCollations(*this);
}

RefCntPtr<Namespace> ShowCollations::Execute(unsigned) {
    Listing listing(L"COLLATIONS");
    listing.AddTexts(L"NAME", collation::names());
    return listing.Finish();
}

}  // namespace qve
