#include "algebra/Restrict.h"

#include "algebra/OperatorVisitor.h"
#include "storage/Column.h"

namespace qve {

Restrict::Restrict(RefCntPtr<DataFlow> source, const ColumnNames& names) : DataFlow(std::move(source), names) {}

void Restrict::Accept(OperatorVisitor& visitor) {
    visitor.VisitRestrict(*this);
}

}  // namespace qve
