#include "metrics/MetricsManager.h"

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace qve::Metrics {

std::atomic<uint64_t> MetricsManager::s_effectiveBits{0};

struct MetricsManager::State {
    using Consumers = std::vector<RefCntPtr<MetricsConsumer>>;

    // Held for a few instructions only, never while a consumer runs: those who emit all the time must not keep one who
    // reconfigures waiting, as a lock that prefers readers would.
    std::mutex mutex;
    bool enabled = false;
    uint64_t bits = 0;
    std::shared_ptr<const Consumers> consumers = std::make_shared<Consumers>();  // replaced, never changed

    std::shared_ptr<const Consumers> GetConsumers() {
        const std::lock_guard lock(mutex);
        return consumers;
    }
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
    const std::lock_guard lock(manager.m_state->mutex);
    manager.m_state->enabled = true;
    manager.UpdateEffectiveBits();
}

void MetricsManager::ShutdownAndFreeInstance() {
    State& state = *GetInstance().m_state;
    auto released = std::make_shared<const State::Consumers>();  // their destructors run without the lock
    const std::lock_guard lock(state.mutex);
    state.enabled = false;
    state.bits = 0;
    state.consumers.swap(released);
    GetInstance().UpdateEffectiveBits();
}

void MetricsManager::SetBits(uint64_t bits) {
    const std::lock_guard lock(m_state->mutex);
    m_state->bits |= bits;
    UpdateEffectiveBits();
}

void MetricsManager::ClearBits(uint64_t bits) {
    const std::lock_guard lock(m_state->mutex);
    m_state->bits &= ~bits;
    UpdateEffectiveBits();
}

uint64_t MetricsManager::GetBits() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->bits;
}

void MetricsManager::AddConsumer(RefCntPtr<MetricsConsumer> consumer) {
    const std::lock_guard lock(m_state->mutex);
    auto consumers = std::make_shared<State::Consumers>(*m_state->consumers);
    consumers->push_back(std::move(consumer));
    m_state->consumers = std::move(consumers);
    UpdateEffectiveBits();
}

void MetricsManager::RemoveConsumer(const RefCntPtr<MetricsConsumer>& consumer) {
    const std::lock_guard lock(m_state->mutex);
    auto consumers = std::make_shared<State::Consumers>(*m_state->consumers);
    std::erase(*consumers, consumer);
    m_state->consumers = std::move(consumers);
    UpdateEffectiveBits();
}

void MetricsManager::UpdateEffectiveBits() {
    const bool flowing = m_state->enabled && !m_state->consumers->empty();
    s_effectiveBits.store(flowing ? m_state->bits : 0, std::memory_order_relaxed);
}

void MetricsManager::Control(ControlCode code, std::string_view name, const MetricsValue& value) {
    const MetricsEvent event{.kind = EventKind::Control,
                             .code = code,
                             .time = std::chrono::steady_clock::now(),
                             .name = name,
                             .value = value};
    const auto consumers = m_state->GetConsumers();
    for (const auto& consumer : *consumers) consumer->OnMetricsEvent(event);
}

void MetricsManager::Emit(MetricsEvent event) noexcept {
    event.time = std::chrono::steady_clock::now();
    const auto consumers = m_state->GetConsumers();
    for (const auto& consumer : *consumers) consumer->OnMetricsEvent(event);
}

}  // namespace qve::Metrics
