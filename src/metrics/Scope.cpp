#include "metrics/Scope.h"

namespace qve::Metrics {

void Scope::Open(const char* name, uint64_t bits) noexcept {
    m_context = Context::Current().GetId();
    m_bits = bits;
    MetricsManager::GetInstance().Emit(
        {.kind = EventKind::OpenScope, .bits = bits, .context = m_context, .name = name});
}

void Scope::Close() noexcept {
    // Closed also when its bits went off meanwhile, so that the stack of scopes stays whole for the consumers.
    MetricsManager::GetInstance().Emit({.kind = EventKind::CloseScope, .bits = m_bits, .context = m_context});
}

}  // namespace qve::Metrics
