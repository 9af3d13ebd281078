#include "metrics/MetricsValue.h"

#include <charconv>

#include "system/unicode.h"

namespace qve::Metrics {

std::string ToString(const MetricsValue& value) {
    return std::visit(
        [](const auto& v) -> std::string {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, bool>) {
                return v ? "true" : "false";
            } else if constexpr (std::is_arithmetic_v<T>) {
                char digits[64];
                return std::string(digits, std::to_chars(digits, digits + sizeof(digits), v).ptr);
            } else if constexpr (std::is_same_v<T, std::wstring_view>) {
                return narrow(v);
            } else {
                return std::string(v);
            }
        },
        value);
}

}  // namespace qve::Metrics
