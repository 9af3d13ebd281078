#include "algebra/PartitionRestart.h"

#include "algebra/OperatorVisitor.h"
#include "algebra/PartitionSplit.h"
#include "algebra/status.h"
#include "system/QuillonException.h"

namespace qve {

PartitionRestart::PartitionRestart(RefCntPtr<DataFlow> source)
    : DataFlow(source, source ? source->GetColumnNames() : ColumnNames()), m_split(FindSplit(m_source)) {
    if (!m_split) throw QVE_InvalidArgument(status::PartitionRestart_source, "PartitionRestart: no partitions");
}

PartitionRestart::~PartitionRestart() = default;

void PartitionRestart::Accept(OperatorVisitor& visitor) {
    visitor.VisitPartitionRestart(*this);
}

RefCntPtr<PartitionSplit> PartitionRestart::FindSplit(const RefCntPtr<DataFlow>& flow) {
    for (RefCntPtr<DataFlow> at = flow; at; at = at->GetSource()) {
        if (auto split = DynamicPtrCast<PartitionSplit>(at)) return split;
    }
    return nullptr;
}

unsigned PartitionRestart::Next(unsigned pageSize) {
    if (pageSize == 0) return SetPage(0);
    while (DataFlow::Next(pageSize) == 0) {
        if (!m_split->Restart(pageSize)) return 0;
    }
    return m_extent;
}

}  // namespace qve
