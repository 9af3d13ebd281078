// What the date kernels say, beside ICU's own Gregorian calendar, whose change is on the same day.

#include <gtest/gtest.h>
#include <unicode/ucal.h>

#include <cmath>
#include <random>

#include "tests/primitives/find_kernel.h"
#include "types/datatraits.h"

namespace qve::test {
namespace {

constexpr unsigned seed = 4711;
constexpr int unix_epoch = 2440587;  // 1 January 1970
constexpr double day_length = 86400000.0;

class IcuCalendar {
public:
    IcuCalendar() {
        static constexpr char16_t utc[] = u"Etc/UTC";
        m_calendar = ucal_open(utc, -1, "en_US", UCAL_GREGORIAN, &m_error);
        ucal_setAttribute(m_calendar, UCAL_FIRST_DAY_OF_WEEK, UCAL_SUNDAY);
        ucal_setAttribute(m_calendar, UCAL_MINIMAL_DAYS_IN_FIRST_WEEK, 1);
    }
    ~IcuCalendar() { ucal_close(m_calendar); }
    IcuCalendar(const IcuCalendar&) = delete;
    IcuCalendar& operator=(const IcuCalendar&) = delete;

    void Set(date d, double milliseconds = 0) {
        ucal_setMillis(m_calendar, (static_cast<double>(d.value) - unix_epoch) * day_length + milliseconds, &m_error);
    }
    void Add(UCalendarDateFields field, int amount) { ucal_add(m_calendar, field, amount, &m_error); }
    int Get(UCalendarDateFields field) { return ucal_get(m_calendar, field, &m_error); }
    // Without a year 0.
    int Year() {
        const int year = Get(UCAL_EXTENDED_YEAR);
        return year < 1 ? year - 1 : year;
    }
    unsigned Day() {
        return static_cast<unsigned>(std::floor(ucal_getMillis(m_calendar, &m_error) / day_length) + unix_epoch);
    }
    bool Failed() const { return U_FAILURE(m_error); }

private:
    UErrorCode m_error = U_ZERO_ERROR;
    UCalendar* m_calendar;
};

// Every day around the change of the calendar and around the turn of the era, and days of all years.
std::vector<date> sample_days() {
    std::vector<date> days;
    for (unsigned day = 2299160 - 2000; day < 2299160 + 2000; ++day) days.push_back({day});
    for (unsigned day = 1721423 - 1500; day < 1721423 + 1500; ++day) days.push_back({day});
    for (unsigned day = 2451544 - 800; day < 2451544 + 800; ++day) days.push_back({day});
    std::mt19937 random(seed);
    for (unsigned i = 0; i < 20000; ++i) days.push_back({static_cast<unsigned>(random() % 5373484)});
    return days;
}

template <class R, class A>
std::vector<R> mapped(const wchar_t* operation, const std::vector<A>& values) {
    const auto f =
        find_kernel<unary_func>(primitive::klassMap, operation, {{std::wstring(datatraits<A>::name), L"col"}});
    std::vector<R> out(values.size());
    f(static_cast<unsigned>(values.size()), output_of(out), input_of(values), nullptr);
    return out;
}

template <class A>
std::vector<date> moved_by(const wchar_t* operation, const std::vector<date>& days, A amount) {
    const auto f = find_kernel<binary_func>(primitive::klassMap, operation,
                                            {{L"date", L"col"}, {std::wstring(datatraits<A>::name), L"val"}});
    const std::vector<A> amounts{amount};
    std::vector<date> out(days.size());
    f(static_cast<unsigned>(days.size()), output_of(out), input_of(days), input_of(amounts), nullptr);
    return out;
}

TEST(IcuCalendar, HasTheSameParts) {
    const std::vector<date> days = sample_days();
    std::mt19937 random(seed);
    std::vector<datetime> moments;
    for (const date d : days) moments.push_back(datetime::at(d, random() % ticks_per_day));
    const auto years = mapped<int>(L"year", days);
    const auto quarters = mapped<int>(L"quarter", moments);
    const auto months = mapped<int>(L"month", days);
    const auto numbers = mapped<int>(L"day", moments);
    const auto yeardays = mapped<int>(L"yearday", days);
    const auto weekdays = mapped<int>(L"weekday", moments);
    const auto weeks = mapped<int>(L"week", days);
    const auto hours = mapped<int>(L"hour", moments);
    const auto minutes = mapped<int>(L"minute", moments);
    const auto seconds = mapped<int>(L"second", moments);
    const auto milliseconds = mapped<int>(L"millisecond", moments);
    IcuCalendar icu;
    for (size_t i = 0; i < days.size(); ++i) {
        SCOPED_TRACE(days[i].value);
        icu.Set(days[i], static_cast<double>(moments[i].value % ticks_per_day / 10));
        ASSERT_EQ(years[i], icu.Year());
        ASSERT_EQ(months[i], icu.Get(UCAL_MONTH) + 1);
        ASSERT_EQ(quarters[i], icu.Get(UCAL_MONTH) / 3 + 1);
        ASSERT_EQ(numbers[i], icu.Get(UCAL_DAY_OF_MONTH));
        ASSERT_EQ(weekdays[i], icu.Get(UCAL_DAY_OF_WEEK));
        ASSERT_EQ(hours[i], icu.Get(UCAL_HOUR_OF_DAY));
        ASSERT_EQ(minutes[i], icu.Get(UCAL_MINUTE));
        ASSERT_EQ(seconds[i], icu.Get(UCAL_SECOND));
        ASSERT_EQ(milliseconds[i], icu.Get(UCAL_MILLISECOND));
        // In the year of the change ICU counts the days that were left out, and its last week of a year may be the
        // first of the next.
        if (years[i] != 1582) {
            ASSERT_EQ(yeardays[i], icu.Get(UCAL_DAY_OF_YEAR));
            const int week = icu.Get(UCAL_WEEK_OF_YEAR);
            ASSERT_TRUE(weeks[i] == week || (week == 1 && months[i] == 12 && weeks[i] >= 53)) << weeks[i];
        }
        ASSERT_FALSE(icu.Failed());
    }
}

TEST(IcuCalendar, MovesByTheSameMonths) {
    const std::vector<date> days = sample_days();
    IcuCalendar icu;
    for (const int amount : {-25, -1, 1, 13, 480}) {
        const auto months = moved_by(L"addmonth", days, amount);
        const auto quarters = moved_by(L"addquarter", days, amount);
        const auto years = moved_by(L"addyear", days, amount);
        for (size_t i = 0; i < days.size(); ++i) {
            const auto added = [&](UCalendarDateFields field, int by) {
                icu.Set(days[i]);
                icu.Add(field, by);
                return icu.Day();
            };
            // A day that was left out becomes another one here and there.
            const auto near_change = [](date d) { return d.value >= 2299150 && d.value < 2299171; };
            if (days[i].value < 100 + 480 * 366 || near_change(days[i])) continue;
            SCOPED_TRACE(std::to_string(days[i].value) + " by " + std::to_string(amount));
            if (!near_change(months[i])) {
                ASSERT_EQ(months[i].value, added(UCAL_MONTH, amount));
            }
            if (!near_change(quarters[i])) {
                ASSERT_EQ(quarters[i].value, added(UCAL_MONTH, 3 * amount));
            }
            // Without a year 0 one year less lies between the eras.
            if (!near_change(years[i]) && days[i].value > 1721423 + 500 * 366) {
                ASSERT_EQ(years[i].value, added(UCAL_YEAR, amount));
            }
        }
    }
}

}  // namespace
}  // namespace qve::test
