#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qve::QuilICU {

/// A date format of a locale. Times are read in UTC and counted in milliseconds since 1 January 1970; the calendar
/// changes from Julian to Gregorian on 15 October 1582. One thread at a time; threads take clones.
class DateFormat {
public:
    struct YearStart {
        double milliseconds;
    };

    /// A format for a pattern such as "d. MMMM yyyy". Null when ICU refuses.
    static std::unique_ptr<DateFormat> Open(const char* locale, std::u16string_view pattern);
    /// The patterns of the locale for dates, and for dates with a time, each from short to full.
    static std::vector<std::u16string> DatePatterns(const char* locale);
    static std::vector<std::u16string> DateTimePatterns(const char* locale);
    /// Names of weekdays from Sunday, and of months from January, in full; of the process's own locale when null.
    static std::vector<std::u16string> WeekdayNames(const char* locale);
    static std::vector<std::u16string> MonthNames(const char* locale);

    ~DateFormat();
    DateFormat(const DateFormat&) = delete;
    DateFormat& operator=(const DateFormat&) = delete;

    /// Null when ICU fails.
    std::unique_ptr<DateFormat> Clone() const;
    /// The moment at which a year begins. Nothing when ICU fails.
    static std::optional<YearStart> StartOfYear(int year);
    /// Years of two digits lie in the hundred years from this moment on. False when ICU fails.
    bool SetTwoDigitYearStart(YearStart start);
    /// The moment that the whole of `text` says; nothing when it says none.
    std::optional<double> Parse(std::u16string_view text);
    std::u16string Format(double milliseconds) const;

private:
    explicit DateFormat(void* format) : m_format(format) {}
    void* m_format;
};

}  // namespace qve::QuilICU
