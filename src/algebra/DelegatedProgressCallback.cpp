#include "algebra/DelegatedProgressCallback.h"

namespace qve {

DelegatedProgressCallback::DelegatedProgressCallback(RefCntPtr<ProgressCallback> delegate)
    : m_delegate(std::move(delegate)) {}

void DelegatedProgressCallback::SetProgress(uint64_t first, uint64_t last, uint64_t done, uint64_t total) {
    if (const auto delegate = GetDelegate()) delegate->SetProgress(first, last, done, total);
}

void DelegatedProgressCallback::GetProgress(uint64_t& first, uint64_t& last, uint64_t& done, uint64_t& total) const {
    first = last = done = total = 0;
    if (const auto delegate = GetDelegate()) delegate->GetProgress(first, last, done, total);
}

void DelegatedProgressCallback::SetCancelled() {
    m_cancelled.store(true, std::memory_order_relaxed);
    if (const auto delegate = GetDelegate()) delegate->SetCancelled();
}

bool DelegatedProgressCallback::IsCancelled() const {
    if (m_cancelled.load(std::memory_order_relaxed)) return true;
    const auto delegate = GetDelegate();
    return delegate && delegate->IsCancelled();
}

RefCntPtr<ProgressCallback> DelegatedProgressCallback::GetDelegate() const {
    std::lock_guard lock(m_mutex);
    return m_delegate;
}

RefCntPtr<ProgressCallback> DelegatedProgressCallback::SetDelegate(RefCntPtr<ProgressCallback> delegate) {
    if (delegate && m_cancelled.load(std::memory_order_relaxed)) delegate->SetCancelled();
    std::lock_guard lock(m_mutex);
    m_delegate.swap(delegate);
    return delegate;
}

DelegatedProgressCallback::RestoreDelegate::RestoreDelegate(DelegatedProgressCallback& callback,
                                                            RefCntPtr<ProgressCallback> delegate)
    : m_callback(callback), m_previous(callback.SetDelegate(std::move(delegate))) {}

DelegatedProgressCallback::RestoreDelegate::~RestoreDelegate() {
    m_callback.SetDelegate(std::move(m_previous));
}

}  // namespace qve
