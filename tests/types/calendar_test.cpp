#include <gtest/gtest.h>
#include <unicode/ucal.h>

#include <sstream>

#include "types/datetime.h"
#include "types/scalartype.h"

namespace qve {
namespace {

std::string printed(auto value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

template <class T>
T parsed(const std::string& text) {
    std::istringstream stream(text);
    T value;
    stream >> value;
    return value;
}

TEST(Calendar, KnownDays) {
    EXPECT_EQ(date::gregoriandate(2000, 1, 1).value, 2451544U);
    EXPECT_EQ(date::mindate, date::gregoriandate(1990, 1, 1));
    EXPECT_EQ(date::maxdate, date::gregoriandate(2020, 12, 31));
    EXPECT_EQ(date::gregoriandate(1582, 10, 15).value, 2299160U);
    EXPECT_EQ(date::gregoriandate(1582, 10, 4).value, 2299159U);
    // There is no year 0: the day after 31 December of year -1 is 1 January of year 1.
    EXPECT_EQ(date::gregoriandate(1, 1, 1).value, date::gregoriandate(-1, 12, 31).value + 1);
}

// Every day from the first to the end of year 9999 against the calendar of ICU, which changes on the same day.
TEST(Calendar, AgreesWithICUOnEveryDay) {
    UErrorCode error = U_ZERO_ERROR;
    UCalendar* calendar = ucal_open(u"Etc/UTC", -1, "en_US@calendar=gregorian", UCAL_GREGORIAN, &error);
    ASSERT_TRUE(U_SUCCESS(error));
    const int epoch = calendar::days(1970, 1, 1);
    const int last = calendar::days(9999, 12, 31);
    // A stride that is coprime to all cycles visits all kinds of days; around the change every day counts.
    int checked = 0;
    for (int day = 0; day <= last; day += day > 2298000 && day < 2300500 ? 1 : 7 + day % 5) {
        ucal_setMillis(calendar, (static_cast<double>(day) - epoch) * 86400000.0, &error);
        const bool before_christ = ucal_get(calendar, UCAL_ERA, &error) == 0;
        const int year = ucal_get(calendar, UCAL_YEAR, &error);
        const calendar::civil_date civil = calendar::civil(day);
        ASSERT_EQ(civil.year, before_christ ? -year : year) << day;
        ASSERT_EQ(civil.month, ucal_get(calendar, UCAL_MONTH, &error) + 1) << day;
        ASSERT_EQ(civil.day, ucal_get(calendar, UCAL_DATE, &error)) << day;
        ASSERT_EQ(calendar::weekday(day), (ucal_get(calendar, UCAL_DAY_OF_WEEK, &error) + 5) % 7) << day;
        ASSERT_EQ(calendar::days(civil.year, civil.month, civil.day), day);
        ASSERT_TRUE(calendar::is_civil(civil.year, civil.month, civil.day)) << day;
        ++checked;
    }
    EXPECT_TRUE(U_SUCCESS(error));
    EXPECT_GT(checked, 500000);
    ucal_close(calendar);
}

TEST(Calendar, RefusesDaysThatNeverWere) {
    EXPECT_FALSE(calendar::is_civil(1582, 10, 5));
    EXPECT_FALSE(calendar::is_civil(1582, 10, 14));
    EXPECT_FALSE(calendar::is_civil(0, 1, 1));
    EXPECT_FALSE(calendar::is_civil(1900, 2, 29));
    EXPECT_TRUE(calendar::is_civil(1500, 2, 29));  // Julian
    EXPECT_TRUE(calendar::is_civil(-1, 2, 29));    // astronomical year 0
    EXPECT_TRUE(calendar::is_civil(-4713, 1, 2));
    EXPECT_FALSE(calendar::is_civil(-4713, 1, 1));
    EXPECT_FALSE(calendar::is_civil(2000, 13, 1));
}

TEST(Calendar, ISOWeeks) {
    EXPECT_EQ(date::iso8601week(date::gregoriandate(2005, 1, 1)), 53);
    EXPECT_EQ(date::iso8601week(date::gregoriandate(2005, 1, 3)), 1);
    EXPECT_EQ(date::iso8601week(date::gregoriandate(2007, 12, 31)), 1);
    EXPECT_EQ(date::iso8601week(date::gregoriandate(2008, 12, 28)), 52);
    EXPECT_EQ(date::iso8601week(date::gregoriandate(2009, 12, 31)), 53);
    EXPECT_EQ(date::iso8601week(date::gregoriandate(2010, 1, 3)), 53);
}

TEST(TemporalText, Dates) {
    EXPECT_EQ(printed(date::gregoriandate(987, 6, 5)), "0987-06-05");
    EXPECT_EQ(printed(date::gregoriandate(-44, 3, 15)), "-0044-03-15");
    EXPECT_EQ(printed(datatraits<date>::null), "NULL");
    EXPECT_EQ(parsed<date>("2000-1-1").value, 2451544U);
    EXPECT_EQ(parsed<date>("2000/01/01").value, 2451544U);
    EXPECT_EQ(parsed<date>("-0044-03-15"), date::gregoriandate(-44, 3, 15));
    for (const char* junk : {"", "2000-01", "2000-01/01", "2000-02-30", "1582-10-10", "abcd", "2000-01-011", "-"}) {
        EXPECT_TRUE(is_null(parsed<date>(junk))) << junk;
    }
}

TEST(TemporalText, Durations) {
    EXPECT_EQ(parsed<duration>("-1:00:00").value, -ticks_per_hour);
    EXPECT_EQ(parsed<duration>("90").value, 90 * ticks_per_second);
    EXPECT_EQ(parsed<duration>("1:30").value, 90 * ticks_per_second);
    EXPECT_EQ(parsed<duration>("2:00:00:00.5").value, 2 * ticks_per_day + 5000);
    EXPECT_EQ(parsed<duration>("0.00005").value, 1);  // half a tick is rounded up
    EXPECT_EQ(printed(duration{-ticks_per_hour}), "-01:00:00");
    EXPECT_EQ(printed(duration{3 * ticks_per_day + 1}), "3:00:00:00.0001");
    EXPECT_EQ(printed(duration{2500}), "00:00:00.25");
    EXPECT_TRUE(is_null(parsed<duration>("1:2:3:4:5")));
    EXPECT_TRUE(is_null(parsed<duration>("1::2")));
    EXPECT_TRUE(is_null(parsed<duration>("999999999999999:0:0:0")));
    EXPECT_TRUE(is_null(parsed<duration>("99999999999999999999")));
    // The smallest and the greatest durations read back.
    for (const long long ticks : {std::numeric_limits<long long>::min() + 1, std::numeric_limits<long long>::max()}) {
        EXPECT_EQ(parsed<duration>(printed(duration{ticks})).value, ticks);
    }
    EXPECT_EQ(duration::hmsduration(1, -2, 3, -4, -5).value,
              -(ticks_per_day + 2 * ticks_per_hour + 3 * ticks_per_minute + 4 * ticks_per_second + 5));
    EXPECT_EQ(duration::hmsduration(-1, 0, 0, 0, 0).value, ticks_per_day);
}

TEST(TemporalText, Moments) {
    const date day = date::gregoriandate(2024, 2, 29);
    EXPECT_EQ(datetime::at(day).ticks(), 0U);
    EXPECT_EQ(printed(datetime::at(day)), "2024-02-29 00:00:00");
    const datetime late = datetime::at(day, ticks_per_day - 1);
    EXPECT_EQ(printed(late), "2024-02-29 23:59:59.9999");
    EXPECT_EQ(parsed<datetime>(printed(late)), late);
    EXPECT_EQ(parsed<datetime>("2024-02-29"), datetime::at(day));
    EXPECT_EQ(parsed<datetime>("2024-02-29T06:00"), datetime::at(day, 6 * ticks_per_hour));
    EXPECT_TRUE(is_null(parsed<datetime>("2024-02-29 24:00:00")));
    const datetime utc = datetime::utc();
    EXPECT_GT(utc.day(), date::gregoriandate(2024, 1, 1));
    EXPECT_LT(datetime::utc().value - utc.value, 10ULL * ticks_per_second);
}

}  // namespace
}  // namespace qve
