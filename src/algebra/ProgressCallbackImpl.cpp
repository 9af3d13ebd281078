#include "algebra/ProgressCallbackImpl.h"

namespace qve {

void ProgressCallbackImpl::SetProgress(uint64_t first, uint64_t last, uint64_t done, uint64_t total) {
    m_first.store(first, std::memory_order_relaxed);
    m_last.store(last, std::memory_order_relaxed);
    m_done.store(done, std::memory_order_relaxed);
    m_total.store(total, std::memory_order_relaxed);
}

void ProgressCallbackImpl::GetProgress(uint64_t& first, uint64_t& last, uint64_t& done, uint64_t& total) const {
    first = m_first.load(std::memory_order_relaxed);
    last = m_last.load(std::memory_order_relaxed);
    done = m_done.load(std::memory_order_relaxed);
    total = m_total.load(std::memory_order_relaxed);
}

void ProgressCallbackImpl::SetCancelled() {
    m_cancelled.store(true, std::memory_order_relaxed);
}

bool ProgressCallbackImpl::IsCancelled() const {
    return m_cancelled.load(std::memory_order_relaxed);
}

}  // namespace qve
