#include "cli/value_text.h"

#include <fmt/format.h>

#include <cstdlib>
#include <cstring>

#include "system/unicode.h"

namespace qve::cli {
namespace {

template <class T>
T Load(const QVE_Value& value) {
    T payload{};
    if (value.size >= sizeof(T)) std::memcpy(&payload, value.data, sizeof(T));
    return payload;
}

template <class T>
std::string NumberText(const QVE_Value& value) {
    return fmt::format("{}", +Load<T>(value));
}

std::string FractionText(int fraction) {
    return fraction == 0 ? std::string() : fmt::format(".{:04}", fraction);
}

std::string YearText(int year) {
    return fmt::format("{}{:04}", year < 0 ? "-" : "", std::abs(year));
}

std::string DateText(const QVE_Date& d) {
    return fmt::format("{}-{:02}-{:02}", YearText(d.year), d.month, d.day);
}

std::string DatetimeText(const QVE_Datetime& d) {
    return fmt::format("{}-{:02}-{:02} {:02}:{:02}:{:02}{}", YearText(d.year), d.month, d.day, d.hour, d.minute,
                       d.second, FractionText(d.fraction));
}

std::string DurationText(const QVE_Duration& d) {
    const bool negative = d.days < 0 || d.hours < 0 || d.minutes < 0 || d.seconds < 0 || d.fraction < 0;
    const long long days = std::llabs(d.days);
    return fmt::format("{}{}{:02}:{:02}:{:02}{}", negative ? "-" : "", days == 0 ? "" : fmt::format("{}:", days),
                       std::abs(d.hours), std::abs(d.minutes), std::abs(d.seconds), FractionText(std::abs(d.fraction)));
}

std::string Text16(const QVE_Value& value) {
    std::u16string units(value.size / sizeof(char16_t), u'\0');
    if (!units.empty()) std::memcpy(units.data(), value.data, units.size() * sizeof(char16_t));
    return narrow(units);
}

}  // namespace

std::string ValueText(const QVE_Value& value) {
    if (value.type & QVE_NULL) return {};
    switch (QVE_TYPE(value.type)) {
        case QVE_INT8:
            return NumberText<int8_t>(value);
        case QVE_UINT8:
            return NumberText<uint8_t>(value);
        case QVE_INT16:
            return NumberText<int16_t>(value);
        case QVE_UINT16:
            return NumberText<uint16_t>(value);
        case QVE_INT32:
            return NumberText<int32_t>(value);
        case QVE_UINT32:
            return NumberText<uint32_t>(value);
        case QVE_INT64:
            return NumberText<int64_t>(value);
        case QVE_UINT64:
            return NumberText<uint64_t>(value);
        case QVE_FLOAT:
            return NumberText<float>(value);
        case QVE_DOUBLE:
            return NumberText<double>(value);
        case QVE_BOOL:
            return Load<uint8_t>(value) ? "true" : "false";
        case QVE_DATE:
            return DateText(Load<QVE_Date>(value));
        case QVE_DATETIME:
            return DatetimeText(Load<QVE_Datetime>(value));
        case QVE_DURATION:
            return DurationText(Load<QVE_Duration>(value));
        case QVE_TEXT8:
            return {static_cast<const char*>(value.data), value.size};
        case QVE_TEXT16:
            return Text16(value);
        default:
            return fmt::format("({} bytes)", value.size);
    }
}

bool IsNumber(uint32_t type) {
    return QVE_TYPE(type) >= QVE_INT8 && QVE_TYPE(type) <= QVE_DOUBLE;
}

}  // namespace qve::cli
