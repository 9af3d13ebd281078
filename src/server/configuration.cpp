#include "server/configuration.h"

#include <algorithm>
#include <istream>
#include <limits>
#include <string>

#include "system/unicode.h"

namespace qve {
namespace {

bool IsSpace(wchar_t c) {
    return c == L' ' || (c >= L'\t' && c <= L'\r');
}
bool IsDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

/// The figure of a key, where the second spelling wins.
std::optional<std::uint32_t> Figure(const usrprops& configuration, usrpropkey first, usrpropkey second) {
    const std::optional<std::uint32_t> winner = ScanDigits(configuration.text(second));
    return winner ? winner : ScanDigits(configuration.text(first));
}

}  // namespace

usrprops ReadConfiguration(std::istream& stream) {
    usrprops properties;
    std::string line;
    while (std::getline(stream, line)) {
        if (line.empty() || line[0] == '#') continue;
        const std::size_t colon = line.find(':');
        if (colon == std::string::npos || colon == 0 || colon + 1 == line.size()) continue;
        const std::wstring key = widen(std::string_view(line).substr(0, colon));
        properties.set(UsrPropKey_FromString(key), widen(std::string_view(line).substr(colon + 1)));
    }
    return properties;
}

std::uint64_t ReadUnsigned(std::wstring_view text) {
    while (!text.empty() && IsSpace(text[0])) text.remove_prefix(1);
    if (!text.empty() && text[0] == L'+') text.remove_prefix(1);
    std::uint64_t number = 0;
    for (; !text.empty() && IsDigit(text[0]); text.remove_prefix(1)) {
        const auto digit = static_cast<std::uint64_t>(text[0] - L'0');
        constexpr std::uint64_t greatest = std::numeric_limits<std::uint64_t>::max();
        if (number > (greatest - digit) / 10) return greatest;
        number = number * 10 + digit;
    }
    return number;
}

std::optional<std::uint32_t> ScanDigits(std::wstring_view text) {
    while (!text.empty() && text[0] <= L' ') text.remove_prefix(1);
    if (text.empty()) return std::nullopt;
    std::uint32_t number = 0;
    for (; !text.empty() && IsDigit(text[0]); text.remove_prefix(1)) {
        number = number * 10 + static_cast<std::uint32_t>(text[0] - L'0');
    }
    return number;
}

ParallelismFigures ParallelismFigures::Compute(const usrprops& configuration, std::uint32_t base,
                                               std::uint32_t builtinMinimum) {
    ParallelismFigures figures;
    const std::uint32_t concurrency = ScanDigits(configuration.text(usrpropkey::max_concurrency)).value_or(0);
    figures.maxConcurrency = concurrency != 0 ? concurrency : base;
    const std::uint32_t degree = Figure(configuration, usrpropkey::dop, usrpropkey::query_parallelism).value_or(0);
    figures.degree = std::max(2U, std::min(degree != 0 ? degree : base, figures.maxConcurrency));
    const std::uint32_t least =
        Figure(configuration, usrpropkey::min_dop, usrpropkey::min_query_parallelism).value_or(builtinMinimum);
    figures.minimumDegree = std::min(figures.degree, std::max(2U, least));
    return figures;
}

}  // namespace qve
