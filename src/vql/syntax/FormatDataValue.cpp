#include "vql/syntax/FormatDataValue.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

#include "vql/syntax/VQLSymbols.h"

namespace qve {

namespace {

void AppendPadded(std::wstring& text, unsigned number, size_t width) {
    const std::wstring digits = std::to_wstring(number);
    if (digits.size() < width) text.append(width - digits.size(), L'0');
    text += digits;
}

void AppendDate(std::wstring& text, int year, int month, int day) {
    if (year < 0) text += L'-';
    AppendPadded(text, static_cast<unsigned>(std::abs(year)), 4);
    text += L'-';
    AppendPadded(text, static_cast<unsigned>(month), 2);
    text += L'-';
    AppendPadded(text, static_cast<unsigned>(day), 2);
}

void AppendClock(std::wstring& text, int hour, int minute, int second, int fraction) {
    AppendPadded(text, static_cast<unsigned>(hour), 2);
    text += L':';
    AppendPadded(text, static_cast<unsigned>(minute), 2);
    text += L':';
    AppendPadded(text, static_cast<unsigned>(second), 2);
    if (fraction == 0) return;
    text += L'.';
    AppendPadded(text, static_cast<unsigned>(fraction), 4);
}

std::wstring FormatDouble(double value) {
    // No literal is infinite but one beyond the range; there is none for a NaN.
    if (std::isinf(value)) return value < 0 ? L"-1e999" : L"1e999";
    if (std::isnan(value)) return VQLSymbols::symNull;
    char digits[64];
    const char* const end = std::to_chars(digits, std::end(digits), value).ptr;
    std::wstring text(static_cast<const char*>(digits), end);
    // Without these it would be read back as an integer.
    if (text.find_first_of(L".e") == std::wstring::npos) text += L".0";
    return text;
}

std::wstring FormatDuration(const VQLDuration& value) {
    const bool negative = value < VQLDuration();
    std::wstring text = negative ? L"#-" : L"#";
    text += std::to_wstring(std::abs(static_cast<long long>(value.day))) + L":";
    AppendClock(text, std::abs(value.hour), std::abs(value.minute), std::abs(value.second), std::abs(value.fraction));
    return text + L"#";
}

}  // namespace

std::wstring FormatString(std::wstring_view text) {
    std::wstring quoted = L"\"";
    for (const wchar_t c : text) {
        switch (c) {
            case L'\t':
                quoted += L"\\t";
                break;
            case L'\n':
                quoted += L"\\n";
                break;
            case L'\r':
                quoted += L"\\r";
                break;
            case L'\\':
            case L'"':
                quoted += L'\\';
                [[fallthrough]];
            default:
                quoted += c;
        }
    }
    return quoted + L"\"";
}

std::wstring FormatDataValue(const VQLDataValue& value) {
    if (value.IsNull()) return VQLSymbols::symNull;
    switch (value.GetType()) {
        case VQLDataType::integer:
            return std::to_wstring(value.GetInteger());
        case VQLDataType::double_:
            return FormatDouble(value.GetDouble());
        case VQLDataType::boolean:
            return value.GetBoolean() ? L"true" : L"false";
        case VQLDataType::string:
            return FormatString(value.GetString());
        case VQLDataType::date: {
            const VQLDate& date = value.GetDate();
            std::wstring text = L"#";
            AppendDate(text, date.year, date.month, date.day);
            return text + L"#";
        }
        case VQLDataType::datetime: {
            const VQLDatetime& moment = value.GetDatetime();
            std::wstring text = L"#";
            AppendDate(text, moment.year, moment.month, moment.day);
            text += L' ';
            AppendClock(text, moment.hour, moment.minute, moment.second, moment.fraction);
            return text + L"#";
        }
        case VQLDataType::duration:
            return FormatDuration(value.GetDuration());
        case VQLDataType::unknown:
        case VQLDataType::spatial:
            break;
    }
    return L"<invalid>";
}

}  // namespace qve
