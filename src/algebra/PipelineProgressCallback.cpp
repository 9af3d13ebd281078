#include "algebra/PipelineProgressCallback.h"

namespace qve {

namespace {

constexpr uint64_t unknown = ~uint64_t{0};

uint64_t Sum(uint64_t a, uint64_t b) {
    return a == unknown || b == unknown ? unknown : a + b;
}

}  // namespace

void PipelineProgressCallback::AddChild(RefCntPtr<ProgressCallback> child) {
    std::lock_guard lock(m_mutex);
    if (IsCancelled()) child->SetCancelled();
    m_children.push_back(std::move(child));
}

void PipelineProgressCallback::GetProgress(uint64_t& first, uint64_t& last, uint64_t& done, uint64_t& total) const {
    ProgressCallbackImpl::GetProgress(first, last, done, total);
    std::lock_guard lock(m_mutex);
    for (const RefCntPtr<ProgressCallback>& child : m_children) {
        uint64_t childFirst, childLast, childDone, childTotal;
        child->GetProgress(childFirst, childLast, childDone, childTotal);
        first = Sum(first, childFirst);
        last = Sum(last, childLast);
        done = Sum(done, childDone);
        total = Sum(total, childTotal);
    }
}

void PipelineProgressCallback::SetCancelled() {
    std::lock_guard lock(m_mutex);
    ProgressCallbackImpl::SetCancelled();
    for (const RefCntPtr<ProgressCallback>& child : m_children) child->SetCancelled();
}

}  // namespace qve
