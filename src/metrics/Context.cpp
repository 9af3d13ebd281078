#include "metrics/Context.h"

#include <atomic>
#include <utility>

namespace qve::Metrics {

namespace {

std::atomic<uint64_t> s_nextId{1};
thread_local uint64_t t_current = 0;

}  // namespace

Context::Context() : m_id(s_nextId.fetch_add(1, std::memory_order_relaxed)) {
    if (IsEnabled(Bits::Threads)) {
        MetricsManager::GetInstance().Emit(
            {.kind = EventKind::CreateContext, .bits = Bits::Threads, .context = m_id, .parent = t_current});
    }
}

Context Context::Attach(std::string_view name) const {
    const Context former(std::exchange(t_current, m_id));
    if (IsEnabled(Bits::Threads)) {
        MetricsManager::GetInstance().Emit(
            {.kind = EventKind::OpenContext, .bits = Bits::Threads, .context = m_id, .name = name});
    }
    return former;
}

void Context::Close() const {
    // Also for those who follow sessions: what they know of the context ends here.
    constexpr uint64_t bits = Bits::Threads | Bits::Session;
    if (IsEnabled(bits))
        MetricsManager::GetInstance().Emit({.kind = EventKind::CloseContext, .bits = bits, .context = m_id});
}

void Context::Restore() const {
    t_current = m_id;
}

Context Context::Current() {
    if (t_current == 0) t_current = Context().GetId();
    return Context(t_current);
}

UniqueMetricsContext::UniqueMetricsContext(UniqueMetricsContext&& other) noexcept
    : m_context(other.m_context),
      m_former(other.m_former),
      m_owner(std::exchange(other.m_owner, false)),
      m_open(std::exchange(other.m_open, false)) {}

UniqueMetricsContext::~UniqueMetricsContext() {
    if (!m_owner) return;
    m_context.Close();
    if (m_open) m_former.Restore();
}

void UniqueMetricsContext::Open(std::string_view name) {
    m_former = m_context.Attach(name);
    m_open = true;
}

}  // namespace qve::Metrics
