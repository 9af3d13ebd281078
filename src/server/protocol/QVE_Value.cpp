#include "server/protocol/QVE_Value.h"

#include <fmt/format.h>

#include <cstring>
#include <ostream>
#include <string>
#include <string_view>

#include "system/unicode.h"

namespace qve {
namespace {

/// The payload as a T; nothing when it is too short, as a hostile peer may send it.
template <class T, class Print>
std::string Format(const QVE_Value& value, Print print) {
    if (value.size < sizeof(T)) return "Invalid value!";
    T payload;
    std::memcpy(&payload, value.data, sizeof(T));
    return print(payload);
}

template <class T>
std::string FormatNumber(const QVE_Value& value) {
    return Format<T>(value, [](T number) { return fmt::format("{}", +number); });
}

template <class T>
std::string FormatFloating(const QVE_Value& value) {
    return Format<T>(value, [](T number) { return fmt::format("{:.2f}", number); });
}

std::string FormatDate(const QVE_WireDate& d) {
    return fmt::format("{:04}-{:02}-{:02}", d.year, d.month, d.day);
}

std::string FormatDatetime(const QVE_WireDatetime& d) {
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}.{:04}", d.year, d.month, d.day, d.hour, d.minute, d.second,
                       d.fraction);
}

std::string FormatDuration(const QVE_WireDuration& d) {
    const bool negative = d.days < 0 || d.hours < 0 || d.minutes < 0 || d.seconds < 0 || d.fraction < 0;
    const auto magnitude = [](long long part) { return part < 0 ? -part : part; };
    return fmt::format("{}{}:{:02}:{:02}:{:02}.{:04}", negative ? "-" : "", magnitude(d.days), magnitude(d.hours),
                       magnitude(d.minutes), magnitude(d.seconds), magnitude(d.fraction));
}

std::string FormatText8(const QVE_Value& value) {
    return {static_cast<const char*>(value.data), value.size};
}

std::string FormatText16(const QVE_Value& value) {
    std::u16string units(value.size / sizeof(char16_t), u'\0');
    if (!units.empty()) std::memcpy(units.data(), value.data, units.size() * sizeof(char16_t));
    return narrow(units);
}

std::string FormatValue(const QVE_Value& value) {
    if (value.IsNull()) return "NULL";
    switch (value.type) {
        case QVE_TypeInt8:
            return FormatNumber<std::int8_t>(value);
        case QVE_TypeUInt8:
            return FormatNumber<std::uint8_t>(value);
        case QVE_TypeInt16:
            return FormatNumber<std::int16_t>(value);
        case QVE_TypeUInt16:
            return FormatNumber<std::uint16_t>(value);
        case QVE_TypeInt32:
            return FormatNumber<std::int32_t>(value);
        case QVE_TypeUInt32:
            return FormatNumber<std::uint32_t>(value);
        case QVE_TypeInt64:
            return FormatNumber<std::int64_t>(value);
        case QVE_TypeUInt64:
            return FormatNumber<std::uint64_t>(value);
        case QVE_TypeFloat:
            return FormatFloating<float>(value);
        case QVE_TypeDouble:
            return FormatFloating<double>(value);
        case QVE_TypeBit:
            return Format<std::uint8_t>(value, [](std::uint8_t bit) { return bit ? "true" : "false"; });
        case QVE_TypeDate:
            return Format<QVE_WireDate>(value, FormatDate);
        case QVE_TypeDatetime:
            return Format<QVE_WireDatetime>(value, FormatDatetime);
        case QVE_TypeDuration:
            return Format<QVE_WireDuration>(value, FormatDuration);
        case QVE_TypeText8:
            return FormatText8(value);
        case QVE_TypeText16:
            return FormatText16(value);
        case QVE_TypeSpatial:
            return fmt::format("spatial value of {} bytes", value.size);
        default:
            return "Unknown type!";
    }
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const QVE_Value& value) {
    return stream << FormatValue(value);
}

}  // namespace qve
