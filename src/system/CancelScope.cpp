#include "system/CancelScope.h"

#include "system/Operator.h"
#include "system/ProgressCallback.h"

namespace qve {

namespace {

thread_local const ProgressCallback* t_progress = nullptr;

}  // namespace

CancelScope::CancelScope(const ProgressCallback* progress) : m_outer(t_progress) {
    t_progress = progress;
}

CancelScope::~CancelScope() {
    t_progress = m_outer;
}

void CancelScope::Check() {
    if (t_progress && t_progress->IsCancelled()) throw Operator::CancelledException();
}

}  // namespace qve
