#include "ingest/ICUDateParser.h"

#include <algorithm>

#include "ingest/ICUDateParserCache.h"
#include "ingest/TextProperties.h"
#include "ingest/status.h"
#include "primitives/datetime_parser.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/builtin.h"

namespace qve {
namespace {

constexpr unsigned most_date_bytes = 128;
constexpr size_t most_known = 4096;
constexpr unsigned rank_of_pattern = 0;
constexpr unsigned rank_of_locale = 4;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// A date has digits; most texts that are none need no look by ICU.
bool MayBeDate(std::string_view text) {
    const auto may = [](char c) { return IsDigit(c) || static_cast<unsigned char>(c) >= 0x80; };
    return text.size() <= most_date_bytes && std::any_of(text.begin(), text.end(), may);
}

template <class Traits>
RefCntPtr<TextColumnParser> MakeParser(const parse_config& config, unsigned rank, const std::string& locale,
                                       const std::u16string& pattern) {
    return MakeRef<ICUDateParser<Traits>>(builtin::usrtypeof<typename Traits::value_type>()->properties(), config, rank,
                                          locale, pattern);
}

// Whether a pattern names a month or a weekday, or has words of its own.
bool HasNames(std::u16string_view pattern) {
    return pattern.find(u"MMM") != std::u16string_view::npos || pattern.find(u"LLL") != std::u16string_view::npos ||
           pattern.find(u'E') != std::u16string_view::npos ||
           std::any_of(pattern.begin(), pattern.end(), [](char16_t c) { return c >= 0x2E80; });
}

}  // namespace

template <class Traits>
ICUDateReader<Traits>::ICUDateReader(std::shared_ptr<const QuilICU::DateFormat> prototype, int firstYear)
    : m_prototype(std::move(prototype)), m_firstYear(firstYear) {}

template <class Traits>
void ICUDateReader<Traits>::Prepare() {
    if (m_format) return;
    auto format = m_prototype->Clone();
    if (!format) {
        throw QVE_RuntimeError(status::ICUDateParser_Reset, "ICUDateParser::Reset: Unable to reallocate calendar");
    }
    const auto start = QuilICU::DateFormat::StartOfYear(m_firstYear);
    if (!start) {
        throw QVE_RuntimeError(status::ICUDateParser_CreateYear,
                               "ICUDateParser::ICUDateParser: Unable to create two digit year");
    }
    if (!format->SetTwoDigitYearStart(*start)) {
        throw QVE_RuntimeError(status::ICUDateParser_SetYear,
                               "ICUDateParser::ICUDateParser: Unable to set two digit year");
    }
    m_format = std::move(format);
}

template <class Traits>
bool ICUDateReader<Traits>::operator()(T& value, unsigned begin, unsigned end, const char* text, const parse_config&) {
    const std::string_view field(text + begin, end - begin);
    if (!MayBeDate(field)) return true;
    auto known = m_known.find(field);
    if (known == m_known.end()) {
        if (m_known.size() >= most_known) m_known.clear();
        std::optional<T> read;
        if (const auto milliseconds = m_format->Parse(PlainBlanks(to_utf16(field)))) {
            if (const auto moment = datetime_at(*milliseconds)) read = Traits::FromMoment(*moment);
        }
        known = m_known.emplace(std::string(field), read).first;
    }
    if (known->second) value = *known->second;
    return !known->second;
}

template <class Traits>
ICUDateParser<Traits>::ICUDateParser(usrprops type, parse_config config, unsigned rank, const std::string& locale,
                                     std::u16string_view pattern)
    : Base(std::move(type), config, rank,
           ICUDateReader<Traits>(
               [&] {
                   auto format = ICUDateParserCache::TryGetSimpleDateFormatWithCaching(
                       locale, std::u16string(pattern).append(Traits::suffix));
                   if (!format) {
                       throw QVE_InvalidArgument(status::ICUDateParser_Allocate,
                                                 "ICUDateParser::ICUDateParser: Unable to allocate parser");
                   }
                   return format;
               }(),
               1900 + config.two_digit_year + 1)) {}

template <class Traits>
RefCntPtr<TextColumnParser> ICUDateParser<Traits>::Clone() const {
    return MakeRef<ICUDateParser>(this->m_type, this->m_config, this->m_rank, this->m_read);
}

template <class Traits>
void ICUDateParser<Traits>::Reset(unsigned rows) {
    this->m_read.Prepare();
    Base::Reset(rows);
}

std::string GetDateLocale(const usrprops& textProperties) {
    const std::wstring* locale = textProperties.get(usrpropkey::locale);
    return locale && !locale->empty() ? narrow(*locale) : "en_US";
}

TextColumnParsers GetDefaultDateFormatsByLocale(const parse_config& config, const std::string& locale) {
    TextColumnParsers parsers;
    const auto entry = ICUDateParserCache::TryGetOrAddLocaleEntry(locale);
    for (const std::u16string& pattern : entry->dates) {
        if (!HasNames(pattern)) continue;
        parsers.push_back(MakeParser<ICUDateParserTraits>(config, rank_of_locale, locale, pattern));
        parsers.push_back(MakeParser<ICUDateISOTimeParserTraits>(config, rank_of_locale, locale, pattern));
    }
    for (const std::u16string& pattern : entry->datetimes) {
        if (!HasNames(pattern)) continue;
        parsers.push_back(MakeParser<ICUDateTimeParserTraits>(config, rank_of_locale, locale, pattern));
    }
    return parsers;
}

std::vector<std::wstring> GetDateOrders(const std::string& locale) {
    std::vector<std::wstring> orders{L"mdy", L"dmy", L"ymd"};
    const auto entry = ICUDateParserCache::TryGetOrAddLocaleEntry(locale);
    std::stable_partition(orders.begin(), orders.end(),
                          [&](const std::wstring& order) { return order == entry->order; });
    return orders;
}

RefCntPtr<TextColumnParser> GetDateFormatParser(const parse_config& config, const std::string& locale,
                                                const std::wstring& pattern) {
    const std::u16string units = to_utf16(pattern);
    return PatternLetters(units).find_first_of(u"hHkKmsSAa") != std::u16string::npos
               ? MakeParser<ICUDateTimeParserTraits>(config, rank_of_pattern, locale, units)
               : MakeParser<ICUDateParserTraits>(config, rank_of_pattern, locale, units);
}

template class ICUDateParser<ICUDateParserTraits>;
template class ICUDateParser<ICUDateTimeParserTraits>;
template class ICUDateParser<ICUDateISOTimeParserTraits>;

}  // namespace qve
