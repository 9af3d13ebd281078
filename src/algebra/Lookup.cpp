#include "algebra/Lookup.h"

#include "algebra/OperatorVisitor.h"
#include "storage/Column.h"

namespace qve {

void Lookup::Accept(OperatorVisitor& visitor) {
    visitor.VisitLookup(*this);
}

}  // namespace qve
