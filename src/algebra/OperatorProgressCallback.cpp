#include "algebra/OperatorProgressCallback.h"

#include "system/Operator.h"

namespace qve {

void OperatorProgressCallback::Step(uint64_t done, uint64_t total) {
    SetProgress(total, total, done, total);
    Check(this);
}

void OperatorProgressCallback::Check(const ProgressCallback* progress) {
    if (progress && progress->IsCancelled()) throw Operator::CancelledException();
}

}  // namespace qve
