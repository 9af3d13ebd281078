#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>

#include "metrics/MetricsBitsUtils.h"
#include "metrics/MetricsEvent.h"
#include "system/RefCntPtr.h"

namespace qve::Metrics {

/// True when events of one of these kinds are wanted now. One relaxed load: it may stand on hot paths, and guards the
/// building of costly attribute values.
inline bool IsEnabled(uint64_t bits) noexcept;

/// The switchboard between those who emit events and those who consume them. All operations from any thread.
/// Events flow while metrics are enabled, a consumer is present, and the event's bit is set.
class MetricsManager {
public:
    /// The one manager; made at the first call.
    static MetricsManager& GetInstance();
    /// Allows events at all. Off until then.
    static void Enable();
    /// Forbids events and releases all consumers. A thread that emits at this moment may still deliver its event.
    static void ShutdownAndFreeInstance();

    void SetBits(uint64_t bits);
    void ClearBits(uint64_t bits);
    /// The wanted bits, whether or not anyone consumes them.
    uint64_t GetBits() const;

    void AddConsumer(RefCntPtr<MetricsConsumer> consumer);
    /// A thread that emits at this moment may still deliver an event to it.
    void RemoveConsumer(const RefCntPtr<MetricsConsumer>& consumer);

    /// Sends a control event to all consumers, whatever the bits.
    void Control(ControlCode code, std::string_view name, const MetricsValue& value);
    /// Delivers an event and stamps its time. Callers ask IsEnabled first.
    void Emit(MetricsEvent event) noexcept;

    MetricsManager(const MetricsManager&) = delete;
    MetricsManager& operator=(const MetricsManager&) = delete;

private:
    MetricsManager();
    void UpdateEffectiveBits();

    friend bool IsEnabled(uint64_t bits) noexcept;
    static std::atomic<uint64_t> s_effectiveBits;

    struct State;
    std::unique_ptr<State> m_state;
};

inline bool IsEnabled(uint64_t bits) noexcept {
    return (MetricsManager::s_effectiveBits.load(std::memory_order_relaxed) & bits) != 0;
}

}  // namespace qve::Metrics
