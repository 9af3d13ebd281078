#pragma once

#include <string_view>

#include "metrics/Context.h"

namespace qve::Metrics {

/// The time between construction and destruction, under the name of the function:
/// `Metrics::Scope scope("SimpleDatabase::DropTable");`. When its bits are off it costs one relaxed load.
class Scope {
public:
    explicit Scope(const char* name, uint64_t bits = Bits::General) noexcept {
        if (IsEnabled(bits)) Open(name, bits);
    }
    ~Scope() {
        if (m_context != 0) Close();
    }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

    /// True when the scope was wanted at its opening: guards costly values.
    bool IsOpen() const noexcept { return m_context != 0; }
    /// Adds a name and a value to this scope.
    template <class T>
    void NameValue(std::string_view name, const T& value) const noexcept {
        if (IsOpen()) {
            MetricsManager::GetInstance().Emit({.kind = EventKind::NameValue,
                                                .bits = m_bits,
                                                .context = m_context,
                                                .name = name,
                                                .value = to_value(value)});
        }
    }

private:
    void Open(const char* name, uint64_t bits) noexcept;
    void Close() noexcept;

    uint64_t m_context = 0;
    uint64_t m_bits = 0;
};

}  // namespace qve::Metrics
