#include "primitives/datetime_parser.h"

#include <algorithm>
#include <cmath>

#include "primitives/arithmetic.h"

namespace qve {
namespace {

constexpr size_t most_prepared = 16;
constexpr int two_digit_year_start = 1930;
constexpr long long ticks_to_unix_epoch = 2440587 * ticks_per_day;

std::unique_ptr<QuilICU::DateFormat> prepare(const char* locale, std::u16string_view pattern) {
    auto format = QuilICU::DateFormat::Open(locale, pattern);
    const auto start = QuilICU::DateFormat::StartOfYear(two_digit_year_start);
    if (format && (!start || !format->SetTwoDigitYearStart(*start))) return nullptr;
    return format;
}

}  // namespace

std::optional<datetime> datetime_at(double milliseconds) {
    if (!(std::fabs(milliseconds) < 1e17)) return std::nullopt;
    const long long ticks = std::llround(milliseconds) * (ticks_per_second / 1000);
    const datetime moment = moved(datetime{0}, duration{ticks_to_unix_epoch + ticks});
    if (is_null(moment)) return std::nullopt;
    return moment;
}

datetime_parser& datetime_parser::local() {
    thread_local datetime_parser own;
    return own;
}

std::optional<datetime> datetime_parser::operator()(std::u16string_view text, std::u16string_view pattern,
                                                    const char* locale) {
    const auto found = std::find_if(m_prepared.rbegin(), m_prepared.rend(), [&](const prepared& known) {
        return known.pattern == pattern && known.locale == locale;
    });
    if (found != m_prepared.rend()) {
        std::rotate(found.base() - 1, found.base(), m_prepared.end());
    } else {
        if (m_prepared.size() == most_prepared) m_prepared.erase(m_prepared.begin());
        m_prepared.push_back({locale, std::u16string(pattern), prepare(locale, pattern)});
    }
    QuilICU::DateFormat* format = m_prepared.back().format.get();
    const auto milliseconds = format ? format->Parse(text) : std::nullopt;
    return milliseconds ? datetime_at(*milliseconds) : std::nullopt;
}

}  // namespace qve
