#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace qve::Metrics {

/// The value of an attribute. Texts are borrowed: they live as long as the event that carries them.
using MetricsValue = std::variant<bool, int64_t, uint64_t, double, std::string_view, std::wstring_view>;

/// Booleans as "true" and "false", numbers in decimal, texts as UTF-8.
std::string ToString(const MetricsValue& value);

/// Any boolean, number or text as a value, without copying the text.
template <class T>
MetricsValue to_value(const T& value) {
    if constexpr (std::is_same_v<T, bool>)
        return value;
    else if constexpr (std::is_floating_point_v<T>)
        return static_cast<double>(value);
    else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>)
        return static_cast<int64_t>(value);
    else if constexpr (std::is_integral_v<T>)
        return static_cast<uint64_t>(value);
    else if constexpr (std::is_convertible_v<const T&, std::wstring_view>)
        return std::wstring_view(value);
    else
        return std::string_view(value);
}

}  // namespace qve::Metrics
