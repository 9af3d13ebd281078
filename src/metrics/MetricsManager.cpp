#include "metrics/MetricsManager.h"

#include <memory>
#include <mutex>
#include <shared_mutex>
#include <vector>

#include "system/TReadWriteLock.h"

namespace qve::Metrics {

std::atomic<uint64_t> MetricsManager::s_effectiveBits{0};

struct MetricsManager::State {
    TReadWriteLock lock;
    bool enabled = false;
    uint64_t bits = 0;
    std::vector<RefCntPtr<MetricsConsumer>> consumers;
};

MetricsManager::MetricsManager() : m_state(std::make_unique<State>()) {}

MetricsManager& MetricsManager::GetInstance() {
    // Never destroyed: threads that outlive main may still ask for it.
    struct Constructible : MetricsManager {};
    static MetricsManager* const instance = std::make_unique<Constructible>().release();
    return *instance;
}

void MetricsManager::Enable() {
    MetricsManager& manager = GetInstance();
    std::unique_lock lock(manager.m_state->lock);
    manager.m_state->enabled = true;
    manager.UpdateEffectiveBits();
}

void MetricsManager::ShutdownAndFreeInstance() {
    MetricsManager& manager = GetInstance();
    std::vector<RefCntPtr<MetricsConsumer>> released;  // their destructors run without the lock
    std::unique_lock lock(manager.m_state->lock);
    manager.m_state->enabled = false;
    manager.m_state->bits = 0;
    manager.m_state->consumers.swap(released);
    manager.UpdateEffectiveBits();
    lock.unlock();
}

void MetricsManager::SetBits(uint64_t bits) {
    std::unique_lock lock(m_state->lock);
    m_state->bits |= bits;
    UpdateEffectiveBits();
}

void MetricsManager::ClearBits(uint64_t bits) {
    std::unique_lock lock(m_state->lock);
    m_state->bits &= ~bits;
    UpdateEffectiveBits();
}

uint64_t MetricsManager::GetBits() const {
    std::shared_lock lock(m_state->lock);
    return m_state->bits;
}

void MetricsManager::AddConsumer(RefCntPtr<MetricsConsumer> consumer) {
    std::unique_lock lock(m_state->lock);
    m_state->consumers.push_back(std::move(consumer));
    UpdateEffectiveBits();
}

void MetricsManager::RemoveConsumer(const RefCntPtr<MetricsConsumer>& consumer) {
    std::unique_lock lock(m_state->lock);
    std::erase(m_state->consumers, consumer);
    UpdateEffectiveBits();
}

void MetricsManager::UpdateEffectiveBits() {
    const bool flowing = m_state->enabled && !m_state->consumers.empty();
    s_effectiveBits.store(flowing ? m_state->bits : 0, std::memory_order_relaxed);
}

void MetricsManager::Control(ControlCode code, std::string_view name, const MetricsValue& value) {
    const MetricsEvent event{.kind = EventKind::Control,
                             .code = code,
                             .time = std::chrono::steady_clock::now(),
                             .name = name,
                             .value = value};
    // Without the lock: a consumer may answer it by setting bits.
    std::shared_lock lock(m_state->lock);
    const auto consumers = m_state->consumers;
    lock.unlock();
    for (const auto& consumer : consumers) consumer->OnMetricsEvent(event);
}

void MetricsManager::Emit(MetricsEvent event) noexcept {
    event.time = std::chrono::steady_clock::now();
    std::shared_lock lock(m_state->lock);
    for (const auto& consumer : m_state->consumers) consumer->OnMetricsEvent(event);
}

}  // namespace qve::Metrics
