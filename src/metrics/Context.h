#pragma once

#include <cstdint>
#include <string_view>

#include "metrics/MetricsManager.h"

namespace qve::Metrics {

/// A line of work with a stack of scopes of its own: a thread, or one statement that moves between threads.
/// Every thread has a context at any time; one is made for it when it first emits.
class Context {
public:
    /// A new context, child of the calling thread's.
    Context();
    explicit Context(uint64_t id) noexcept : m_id(id) {}

    uint64_t GetId() const noexcept { return m_id; }
    /// Makes this the context of the calling thread and names it. Returns what stood before, for a later Restore.
    Context Attach(std::string_view name) const;
    /// Makes this the context of the calling thread again, without an event.
    void Restore() const;
    /// Ends the context for its consumers.
    void Close() const;

    /// The calling thread's context.
    static Context Current();

private:
    uint64_t m_id;
};

/// Owns a context for the life of a thread: made by the thread that starts it, opened by the thread that runs in it.
/// The destructor closes it and gives the running thread its former context back.
class UniqueMetricsContext {
public:
    UniqueMetricsContext() = default;
    UniqueMetricsContext(UniqueMetricsContext&& other) noexcept;
    UniqueMetricsContext& operator=(UniqueMetricsContext&&) = delete;
    ~UniqueMetricsContext();

    void Open(std::string_view name);
    const Context& GetContext() const noexcept { return m_context; }

private:
    Context m_context;
    Context m_former{0};
    bool m_owner = true;
    bool m_open = false;
};

/// Ties a name and a value to the calling thread's context, from now on: "session" of a request, for instance.
template <class T>
void Attribute(std::string_view name, const T& value, uint64_t bits = Bits::General) noexcept {
    if (IsEnabled(bits)) {
        MetricsManager::GetInstance().Emit({.kind = EventKind::Attribute,
                                            .bits = bits,
                                            .context = Context::Current().GetId(),
                                            .name = name,
                                            .value = to_value(value)});
    }
}

/// Adds a name and a value to the innermost open scope of the calling thread's context.
template <class T>
void NameValue(std::string_view name, const T& value, uint64_t bits = Bits::General) noexcept {
    if (IsEnabled(bits)) {
        MetricsManager::GetInstance().Emit({.kind = EventKind::NameValue,
                                            .bits = bits,
                                            .context = Context::Current().GetId(),
                                            .name = name,
                                            .value = to_value(value)});
    }
}

}  // namespace qve::Metrics
