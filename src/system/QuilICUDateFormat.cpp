#include "system/QuilICUDateFormat.h"

#include <unicode/ucal.h>
#include <unicode/udat.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <utility>

namespace qve::QuilICU {
namespace {

constexpr char16_t utc[] = u"Etc/UTC";

// Calls fill(buffer, capacity, error) with room enough.
template <class Fill>
std::u16string filled(Fill fill) {
    std::u16string text(64, u'\0');
    for (int attempt = 0; attempt < 2; ++attempt) {
        UErrorCode error = U_ZERO_ERROR;
        const int32_t needed = fill(text.data(), static_cast<int32_t>(text.size()), &error);
        if (error != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(error)) return {};
        const bool fitted = error != U_BUFFER_OVERFLOW_ERROR;
        text.resize(static_cast<size_t>(needed));
        if (fitted) return text;
    }
    return {};
}

// The name of a locale, or that of no locale in particular for a name whose parts are too long to be any: ICU does not
// survive these everywhere.
std::string checked(const char* locale) {
    using Part = int32_t (*)(const char*, char*, int32_t, UErrorCode*);
    constexpr std::pair<Part, int32_t> parts[] = {{uloc_canonicalize, ULOC_FULLNAME_CAPACITY},
                                                  {uloc_getLanguage, ULOC_LANG_CAPACITY},
                                                  {uloc_getScript, ULOC_SCRIPT_CAPACITY},
                                                  {uloc_getCountry, ULOC_COUNTRY_CAPACITY}};
    char text[ULOC_FULLNAME_CAPACITY];
    for (const auto& [part, capacity] : parts) {
        UErrorCode error = U_ZERO_ERROR;
        if (part(locale, text, capacity, &error) >= capacity || U_FAILURE(error)) return {};
    }
    return locale;
}

UDateFormat* open(UDateFormatStyle time, UDateFormatStyle date, const char* locale, std::u16string_view pattern) {
    UErrorCode error = U_ZERO_ERROR;
    UDateFormat* format = udat_open(time, date, locale ? checked(locale).c_str() : nullptr, utc, -1, pattern.data(),
                                    static_cast<int32_t>(pattern.size()), &error);
    return U_SUCCESS(error) ? format : nullptr;
}

std::vector<std::u16string> patterns(const char* locale, bool withTime) {
    std::vector<std::u16string> found;
    for (const UDateFormatStyle style : {UDAT_SHORT, UDAT_MEDIUM, UDAT_LONG, UDAT_FULL}) {
        UDateFormat* format = open(withTime ? style : UDAT_NONE, style, locale, {});
        if (!format) continue;
        std::u16string pattern = filled([format](char16_t* buffer, int32_t capacity, UErrorCode* error) {
            return udat_toPattern(format, false, buffer, capacity, error);
        });
        udat_close(format);
        if (!pattern.empty() && std::find(found.begin(), found.end(), pattern) == found.end()) {
            found.push_back(std::move(pattern));
        }
    }
    return found;
}

std::vector<std::u16string> symbols(const char* locale, UDateFormatSymbolType type, int32_t from) {
    std::vector<std::u16string> names;
    // Some locales count in another calendar, with months of its own.
    const std::string gregorian = std::string(locale ? locale : uloc_getDefault()) + "@calendar=gregorian";
    UDateFormat* format = open(UDAT_NONE, UDAT_FULL, gregorian.c_str(), {});
    if (!format) return names;
    const int32_t count = udat_countSymbols(format, type);
    for (int32_t i = from; i < count; ++i) {
        names.push_back(filled([=](char16_t* buffer, int32_t capacity, UErrorCode* error) {
            return udat_getSymbols(format, type, i, buffer, capacity, error);
        }));
    }
    udat_close(format);
    return names;
}

}  // namespace

std::unique_ptr<DateFormat> DateFormat::Open(const char* locale, std::u16string_view pattern) {
    UDateFormat* format = open(UDAT_PATTERN, UDAT_PATTERN, locale, pattern);
    if (!format) return nullptr;
    udat_setLenient(format, false);
    return std::unique_ptr<DateFormat>(new DateFormat(format));
}

std::vector<std::u16string> DateFormat::DatePatterns(const char* locale) {
    return patterns(locale, false);
}
std::vector<std::u16string> DateFormat::DateTimePatterns(const char* locale) {
    return patterns(locale, true);
}
// The symbols of weekdays begin with an empty one, as days count from 1.
std::vector<std::u16string> DateFormat::WeekdayNames(const char* locale) {
    return symbols(locale, UDAT_WEEKDAYS, 1);
}
std::vector<std::u16string> DateFormat::MonthNames(const char* locale) {
    return symbols(locale, UDAT_STANDALONE_MONTHS, 0);
}

DateFormat::~DateFormat() {
    udat_close(static_cast<UDateFormat*>(m_format));
}

std::unique_ptr<DateFormat> DateFormat::Clone() const {
    UErrorCode error = U_ZERO_ERROR;
    UDateFormat* copy = udat_clone(static_cast<UDateFormat*>(m_format), &error);
    if (U_FAILURE(error)) return nullptr;
    return std::unique_ptr<DateFormat>(new DateFormat(copy));
}

std::optional<DateFormat::YearStart> DateFormat::StartOfYear(int year) {
    UErrorCode error = U_ZERO_ERROR;
    UCalendar* calendar = ucal_open(utc, -1, "en_US", UCAL_GREGORIAN, &error);
    if (U_FAILURE(error)) return std::nullopt;
    ucal_clear(calendar);
    ucal_setDateTime(calendar, year, UCAL_JANUARY, 1, 0, 0, 0, &error);
    const UDate start = ucal_getMillis(calendar, &error);
    ucal_close(calendar);
    if (U_FAILURE(error)) return std::nullopt;
    return YearStart{start};
}

bool DateFormat::SetTwoDigitYearStart(YearStart start) {
    UErrorCode error = U_ZERO_ERROR;
    udat_set2DigitYearStart(static_cast<UDateFormat*>(m_format), start.milliseconds, &error);
    return U_SUCCESS(error);
}

std::optional<double> DateFormat::Parse(std::u16string_view text) {
    UErrorCode error = U_ZERO_ERROR;
    int32_t end = 0;
    const UDate moment =
        udat_parse(static_cast<UDateFormat*>(m_format), text.data(), static_cast<int32_t>(text.size()), &end, &error);
    if (U_FAILURE(error) || static_cast<size_t>(end) != text.size()) return std::nullopt;
    return moment;
}

std::u16string DateFormat::Format(double milliseconds) const {
    return filled([=, this](char16_t* buffer, int32_t capacity, UErrorCode* error) {
        return udat_format(static_cast<const UDateFormat*>(m_format), milliseconds, buffer, capacity, nullptr, error);
    });
}

}  // namespace qve::QuilICU
