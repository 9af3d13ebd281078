#include "algebra/BridgeProgressCallback.h"

namespace qve {

BridgeProgressCallback::BridgeProgressCallback(RefCntPtr<ProgressCallback> parent, uint64_t begin, uint64_t end)
    : m_parent(std::move(parent)), m_begin(begin), m_end(end) {}

void BridgeProgressCallback::SetProgress(uint64_t first, uint64_t last, uint64_t done, uint64_t total) {
    ProgressCallbackImpl::SetProgress(first, last, done, total);
    if (!m_parent) return;
    uint64_t parentFirst, parentLast, parentDone, parentTotal;
    m_parent->GetProgress(parentFirst, parentLast, parentDone, parentTotal);
    const double share =
        total == 0 ? 1.0 : static_cast<double>(done < total ? done : total) / static_cast<double>(total);
    const auto units = static_cast<uint64_t>(share * static_cast<double>(m_end - m_begin));
    m_parent->SetProgress(parentFirst, parentLast, m_begin + units, parentTotal);
}

bool BridgeProgressCallback::IsCancelled() const {
    return ProgressCallbackImpl::IsCancelled() || (m_parent && m_parent->IsCancelled());
}

}  // namespace qve
