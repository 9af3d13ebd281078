#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/primitives/find_kernel.h"
#include "types/calendar.h"
#include "types/datatraits.h"

namespace qve::test {
namespace {

date day(int year, int month, int d) {
    return date::gregoriandate(year, static_cast<char>(month), static_cast<char>(d));
}
datetime moment(int year, int month, int d, int hour = 0, int minute = 0, int second = 0, int tick = 0) {
    return datetime::at(day(year, month, d),
                        static_cast<unsigned long long>(hour * ticks_per_hour + minute * ticks_per_minute +
                                                        second * ticks_per_second + tick));
}

template <class R, class A>
R one(const wchar_t* operation, A a) {
    const auto f =
        find_kernel<unary_func>(primitive::klassMap, operation, {{std::wstring(datatraits<A>::name), L"col"}});
    const std::vector<A> in{a};
    std::vector<R> out(1);
    f(1, output_of(out), input_of(in), nullptr);
    return out[0];
}
template <class R, class A, class B>
R two(const wchar_t* operation, A a, B b) {
    const auto f = find_kernel<binary_func>(
        primitive::klassMap, operation,
        {{std::wstring(datatraits<A>::name), L"col"}, {std::wstring(datatraits<B>::name), L"val"}});
    const std::vector<A> left{a};
    const std::vector<B> right{b};
    std::vector<R> out(1);
    f(1, output_of(out), input_of(left), input_of(right), nullptr);
    return out[0];
}

const date null_date = datatraits<date>::null;
const datetime null_datetime = datatraits<datetime>::null;
const duration null_duration = datatraits<duration>::null;
constexpr int null_int = datatraits<int>::null;

TEST(DateParts, TakeADayApart) {
    struct {
        date d;
        int year, quarter, month, day, yearday, weekday, week;
    } cases[] = {
        {day(2000, 1, 1), 2000, 1, 1, 1, 1, 7, 1},         // a Saturday: its week ends with it
        {day(2000, 1, 2), 2000, 1, 1, 2, 2, 1, 2},         // the Sunday after begins the second
        {day(2000, 12, 31), 2000, 4, 12, 31, 366, 1, 54},  // 2000 began on a Saturday and was long
        {day(1999, 12, 31), 1999, 4, 12, 31, 365, 6, 53}, {day(2023, 6, 30), 2023, 2, 6, 30, 181, 6, 26},
        {day(2024, 2, 29), 2024, 1, 2, 29, 60, 5, 9},     {day(1582, 10, 4), 1582, 4, 10, 4, 277, 5, 40},
        {day(1582, 10, 15), 1582, 4, 10, 15, 278, 6, 40},  // the very next day
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.d.value);
        for (const bool with_time : {false, true}) {
            const datetime t = datetime::at(c.d, with_time ? ticks_per_day - 1 : 0);
            EXPECT_EQ(one<int>(L"year", c.d), c.year);
            EXPECT_EQ(one<int>(L"year", t), c.year);
            EXPECT_EQ(one<int>(L"quarter", t), c.quarter);
            EXPECT_EQ(one<int>(L"month", t), c.month);
            EXPECT_EQ(one<int>(L"day", t), c.day);
            EXPECT_EQ(one<int>(L"yearday", t), c.yearday);
            EXPECT_EQ(one<int>(L"weekday", t), c.weekday);
            EXPECT_EQ(one<int>(L"week", t), c.week);
        }
    }
    EXPECT_EQ(one<int>(L"year", null_date), null_int);
    EXPECT_EQ(one<int>(L"week", null_datetime), null_int);
    EXPECT_EQ(one<int>(L"year", day(-44, 3, 15)), -44);
}

TEST(DateParts, TakeATimeApart) {
    const datetime t = moment(2020, 5, 6, 23, 59, 58, 9999);
    EXPECT_EQ(one<int>(L"hour", t), 23);
    EXPECT_EQ(one<int>(L"minute", t), 59);
    EXPECT_EQ(one<int>(L"second", t), 58);
    EXPECT_EQ(one<int>(L"millisecond", t), 999);
    EXPECT_EQ(one<int>(L"hour", day(2020, 5, 6)), 0);
    const duration minus{-(2 * ticks_per_day + 3 * ticks_per_hour + 4 * ticks_per_minute)};
    EXPECT_EQ(one<int>(L"day", minus), -2);
    EXPECT_EQ(one<int>(L"hour", minus), -3);
    EXPECT_EQ(one<int>(L"minute", minus), -4);
    EXPECT_EQ(one<int>(L"week", duration{15 * ticks_per_day}), 2);
}

TEST(DateTruncation, GoesToTheFirstOfEachUnit) {
    const datetime t = moment(2023, 8, 17, 13, 14, 15, 1234);  // a Thursday
    EXPECT_EQ(one<date>(L"truncyear", t), day(2023, 1, 1));
    EXPECT_EQ(one<date>(L"truncquarter", t), day(2023, 7, 1));
    EXPECT_EQ(one<date>(L"truncmonth", t), day(2023, 8, 1));
    EXPECT_EQ(one<date>(L"truncweek", t), day(2023, 8, 13));
    EXPECT_EQ(one<date>(L"truncday", t), day(2023, 8, 17));
    EXPECT_EQ(one<date>(L"truncweek", day(2023, 8, 13)), day(2023, 8, 13));
    EXPECT_EQ(one<date>(L"truncmonth", null_datetime), null_date);
    EXPECT_EQ(two<datetime>(L"trunctime", t, bigint{36000000}), moment(2023, 8, 17, 13));
    EXPECT_EQ(two<datetime>(L"trunctime", t, 10000), moment(2023, 8, 17, 13, 14, 15));
    EXPECT_EQ(two<datetime>(L"trunctime", day(2023, 8, 17), 10), moment(2023, 8, 17));
    EXPECT_EQ(two<datetime>(L"trunctime", t, 0), null_datetime);
    EXPECT_EQ(two<duration>(L"trunctime", duration{-25}, 10), duration{-20});
    EXPECT_EQ(one<duration>(L"truncday", duration{ticks_per_day + 5}), duration{ticks_per_day});
}

TEST(DateAddition, ClampsToTheLengthOfTheMonth) {
    EXPECT_EQ(two<date>(L"addmonth", day(2024, 1, 31), 1), day(2024, 2, 29));
    EXPECT_EQ(two<date>(L"addmonth", day(2023, 1, 31), 1), day(2023, 2, 28));
    EXPECT_EQ(two<date>(L"addmonth", day(2023, 1, 31), -2), day(2022, 11, 30));
    EXPECT_EQ(two<date>(L"addyear", day(2024, 2, 29), bigint{1}), day(2025, 2, 28));
    EXPECT_EQ(two<date>(L"addquarter", day(2023, 11, 30), char{1}), day(2024, 2, 29));
    EXPECT_EQ(two<date>(L"addyear", day(1, 6, 1), -1), day(-1, 6, 1));  // there is no year 0
    EXPECT_EQ(two<datetime>(L"addmonth", moment(2024, 3, 31, 7, 8), short{-1}), moment(2024, 2, 29, 7, 8));
    EXPECT_EQ(two<date>(L"addweek", day(2024, 2, 28), 1), day(2024, 3, 6));
    EXPECT_EQ(two<datetime>(L"addhour", moment(2024, 2, 28, 23), 2), moment(2024, 2, 29, 1));
    EXPECT_EQ(two<datetime>(L"addmillisecond", moment(2024, 1, 1), -1), moment(2023, 12, 31, 23, 59, 59, 9990));
    EXPECT_EQ(two<duration>(L"addday", duration{5}, -1), duration{5 - ticks_per_day});
    for (const bigint count : {datatraits<bigint>::null, bigint{1} << 62, -(bigint{1} << 62)}) {
        EXPECT_EQ(two<date>(L"addmonth", day(2024, 1, 1), count), null_date) << count;
        EXPECT_EQ(two<date>(L"addday", day(2024, 1, 1), count), null_date) << count;
        EXPECT_EQ(two<datetime>(L"addsecond", moment(2024, 1, 1), count), null_datetime) << count;
        EXPECT_EQ(two<duration>(L"addhour", duration{1}, count), null_duration) << count;
    }
    EXPECT_EQ(two<date>(L"addday", null_date, 1), null_date);
}

TEST(DateDifference, CountsBoundariesOfTheUnit) {
    EXPECT_EQ(two<int>(L"diffyear", day(2023, 12, 31), day(2024, 1, 1)), 1);
    EXPECT_EQ(two<int>(L"diffyear", day(-1, 5, 5), day(1, 5, 5)), 1);
    EXPECT_EQ(two<int>(L"diffquarter", moment(2023, 12, 31), day(2024, 4, 1)), 2);
    EXPECT_EQ(two<int>(L"diffmonth", day(2024, 3, 31), moment(2024, 1, 1)), -2);
    EXPECT_EQ(two<int>(L"diffweek", day(2023, 8, 12), day(2023, 8, 13)), 1);  // Saturday to Sunday
    EXPECT_EQ(two<int>(L"diffweek", day(2023, 8, 13), day(2023, 8, 19)), 0);
    EXPECT_EQ(two<int>(L"diffday", moment(2023, 8, 13, 23), moment(2023, 8, 14, 1)), 1);
    EXPECT_EQ(two<int>(L"diffhour", day(2023, 8, 13), moment(2023, 8, 13, 5, 59)), 5);
    EXPECT_EQ(two<int>(L"diffsecond", duration{5}, duration{3 * ticks_per_second}), 3);
    EXPECT_EQ(two<int>(L"diffmillisecond", moment(2000, 1, 1), moment(2001, 1, 1)), null_int);  // more than fits
    EXPECT_EQ(two<int>(L"diffday", null_date, day(2000, 1, 1)), null_int);
}

TEST(MomentArithmetic, CountsInDays) {
    EXPECT_EQ(two<date>(L"plus", day(2024, 2, 28), 2), day(2024, 3, 1));
    EXPECT_EQ(two<date>(L"minus", day(2024, 3, 1), bigint{2}), day(2024, 2, 28));
    EXPECT_EQ(two<datetime>(L"plus", day(2024, 2, 28), 1.5), moment(2024, 2, 29, 12));
    EXPECT_EQ(two<datetime>(L"minus", moment(2024, 3, 1), 0.25f), moment(2024, 2, 29, 18));
    EXPECT_EQ(two<datetime>(L"plus", moment(2024, 3, 1), short{1}), moment(2024, 3, 2));
    EXPECT_EQ(two<datetime>(L"minus", moment(2024, 3, 1), duration{1}), moment(2024, 2, 29, 23, 59, 59, 9999));
    EXPECT_EQ(two<int>(L"minus", day(2024, 3, 1), day(2024, 2, 28)), 2);
    EXPECT_EQ(two<double>(L"minus", moment(2024, 3, 1), moment(2024, 3, 2, 6)), -1.25);
    EXPECT_EQ(two<duration>(L"plus", duration{5}, duration{-7}), duration{-2});
    EXPECT_EQ(two<duration>(L"times", duration{5}, 2.5), duration{13});
    EXPECT_EQ(two<duration>(L"times", char{-3}, duration{5}), duration{-15});
    EXPECT_EQ(two<duration>(L"divide", duration{-15}, 4), duration{-3});
    EXPECT_EQ(two<duration>(L"divide", duration{15}, 0), null_duration);
    EXPECT_EQ(two<duration>(L"divide", duration{15}, 0.5), duration{30});
    EXPECT_EQ(one<duration>(L"negate", duration{5}), duration{-5});
    // What leaves the calendar is null, whichever way it leaves.
    EXPECT_EQ(two<date>(L"minus", day(2024, 1, 1), bigint{1} << 40), null_date);
    EXPECT_EQ(two<date>(L"plus", day(2024, 1, 1), std::numeric_limits<bigint>::max()), null_date);
    EXPECT_EQ(two<datetime>(L"plus", moment(2024, 1, 1), 1e300), null_datetime);
    EXPECT_EQ(two<datetime>(L"plus", moment(2024, 1, 1), -1e7), null_datetime);
    EXPECT_EQ(two<datetime>(L"plus", null_date, 1.0), null_datetime);
}

TEST(MomentConversion, KeepsDaysAndFractions) {
    EXPECT_EQ(one<datetime>(L"datetime", day(2024, 2, 29)), moment(2024, 2, 29));
    EXPECT_EQ(one<date>(L"to_date", moment(2024, 2, 29, 23, 59)), day(2024, 2, 29));
    EXPECT_EQ(one<bigint>(L"to_int", day(2000, 1, 1)), 2451544);
    EXPECT_EQ(one<date>(L"to_date", bigint{2451544}), day(2000, 1, 1));
    EXPECT_EQ(one<double>(L"to_real", moment(2000, 1, 1, 12)), 2451544.5);
    EXPECT_EQ(one<datetime>(L"to_datetime", 2451544.5), moment(2000, 1, 1, 12));
    EXPECT_EQ(one<duration>(L"to_duration", -1.5), duration{-ticks_per_day - ticks_per_day / 2});
    EXPECT_EQ(one<bigint>(L"to_int", duration{-ticks_per_day - 1}), -1);
    EXPECT_EQ(one<datetime>(L"datetime", duration{-1}), null_datetime);
    EXPECT_EQ(one<date>(L"date", bigint{-1}), null_date);
    EXPECT_EQ(one<date>(L"date", std::nan("")), null_date);
    EXPECT_EQ(one<short>(L"short", day(2000, 1, 1)), datatraits<short>::null);
}

}  // namespace
}  // namespace qve::test
