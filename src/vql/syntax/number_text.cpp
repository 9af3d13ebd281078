#include "vql/syntax/number_text.h"

#include <charconv>
#include <clocale>
#include <cstdlib>
#include <string>

namespace qve {

namespace {

/// The text as ASCII; nothing when it is empty or holds anything else.
std::optional<std::string> Ascii(std::wstring_view text) {
    if (text.empty()) return {};
    std::string ascii;
    ascii.reserve(text.size());
    for (const wchar_t c : text) {
        if (c <= L' ' || c > L'~') return {};
        ascii += static_cast<char>(c);
    }
    return ascii;
}

locale_t NumberLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

}  // namespace

std::optional<long long> ParseInteger(std::wstring_view text) {
    const std::optional<std::string> ascii = Ascii(text);
    if (!ascii) return {};
    const char* first = ascii->data();
    const char* const last = first + ascii->size();
    if (*first == '+' && last - first > 1 && first[1] != '-') ++first;
    long long value;
    const auto [end, error] = std::from_chars(first, last, value);
    if (error != std::errc() || end != last) return {};
    return value;
}

std::optional<double> ParseDouble(std::wstring_view text) {
    const std::optional<std::string> ascii = Ascii(text);
    if (!ascii) return {};
    // std::from_chars knows neither the prefix of hexadecimal numbers nor what to give beyond the range.
    char* end;
    const double value = strtod_l(ascii->c_str(), &end, NumberLocale());
    if (end != ascii->data() + ascii->size()) return {};
    return value;
}

}  // namespace qve
