// Dates the slow way: by cycles of the calendar and std::chrono, in wide integers.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <map>

#include "tests/primitives/kernel_reference.h"

namespace qve::test {
namespace {

using types_of = const std::vector<const type_info*>&;
using cells = const std::vector<cell>&;

constexpr long long ticks_of_day = 864000000;
constexpr long long gregorian_start = 2299160;
constexpr long long first_of_2000 = 2451544;
constexpr __int128 date_end = __int128{1} << 31;

struct civil_day {
    long long year;  // astronomical: there is a year 0
    int month;
    int day;
};

int julian_month_length(long long year, int month) {
    constexpr int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return lengths[month - 1] + (month == 2 && year % 4 == 0);
}

civil_day civil_of(long long number) {
    if (number >= gregorian_start) {
        const long long since = number - first_of_2000;
        const long long cycles = (since >= 0 ? since : since - 146096) / 146097;
        const std::chrono::sys_days start = std::chrono::year(2000) / std::chrono::January / 1;
        const std::chrono::year_month_day ymd(start + std::chrono::days(since - cycles * 146097));
        return {static_cast<int>(ymd.year()) + 400 * cycles, static_cast<int>(static_cast<unsigned>(ymd.month())),
                static_cast<int>(static_cast<unsigned>(ymd.day()))};
    }
    // Day 0 is 2 January of the year -4712.
    long long rest = number + 1;
    civil_day result{-4712 + 4 * (rest / 1461), 1, 0};
    rest %= 1461;
    while (rest >= (result.year % 4 == 0 ? 366 : 365)) rest -= result.year++ % 4 == 0 ? 366 : 365;
    while (rest >= julian_month_length(result.year, result.month)) {
        rest -= julian_month_length(result.year, result.month++);
    }
    result.day = static_cast<int>(rest) + 1;
    return result;
}

long long number_of(civil_day c) {
    const bool gregorian = c.year > 1582 || (c.year == 1582 && (c.month > 10 || (c.month == 10 && c.day >= 15)));
    if (gregorian) {
        const long long cycles = (c.year - 2000 >= 0 ? c.year - 2000 : c.year - 2399) / 400;
        const std::chrono::sys_days start = std::chrono::year(2000) / std::chrono::January / 1;
        const std::chrono::sys_days day = std::chrono::year(static_cast<int>(c.year - 400 * cycles)) /
                                          std::chrono::month(static_cast<unsigned>(c.month)) /
                                          std::chrono::day(static_cast<unsigned>(c.day));
        return first_of_2000 + cycles * 146097 + (day - start).count();
    }
    const long long cycles = (c.year + 4712 - (c.year < -4712 ? 3 : 0)) / 4;
    long long number = cycles * 1461 - 1;
    for (long long year = -4712 + 4 * cycles; year < c.year; ++year) number += year % 4 == 0 ? 366 : 365;
    for (int month = 1; month < c.month; ++month) number += julian_month_length(c.year, month);
    return number + c.day - 1;
}

bool is(const type_info* type, std::wstring_view name) {
    return type->name == name;
}
// The day of a date or moment.
long long day_of(const type_info* type, const cell& c) {
    return static_cast<long long>(is(type, L"date") ? c.i : c.i / ticks_of_day);
}
__int128 ticks_of(const type_info* type, const cell& c) {
    return is(type, L"date") ? c.i * ticks_of_day : c.i;
}
__int128 floored(__int128 a, __int128 b) {
    return a / b - (a % b < 0);
}
long long week_of(long long day) {
    return (day + 2) / 7;
}

enum class part { year, quarter, month, day, yearday, weekday, week };

template <part Part>
cell day_part(const type_info& r, types_of t, cells a) {
    if (a[0].null) return null_cell();
    if (is(t[0], L"duration")) {
        return wrapped(r, a[0].i / ticks_of_day / (Part == part::week ? 7 : 1));
    }
    const long long day = day_of(t[0], a[0]);
    const civil_day c = civil_of(day);
    const long long first = number_of({c.year, 1, 1});
    switch (Part) {
        case part::year:
            return wrapped(r, c.year < 1 ? c.year - 1 : c.year);
        case part::quarter:
            return wrapped(r, (c.month + 2) / 3);
        case part::month:
            return wrapped(r, c.month);
        case part::day:
            return wrapped(r, c.day);
        case part::yearday:
            return wrapped(r, day - first + 1);
        case part::weekday:
            return wrapped(r, (day + 2) % 7 + 1);
        case part::week:
            return wrapped(r, week_of(day) - week_of(first) + 1);
    }
    return null_cell();
}

template <long long Unit, long long Count>
cell clock_part(const type_info& r, types_of t, cells a) {
    if (a[0].null) return null_cell();
    const __int128 clock = is(t[0], L"date") ? 0 : a[0].i % ticks_of_day;
    return wrapped(r, clock / Unit % Count);
}

enum class stretch { year, quarter, month, week, day };

template <stretch Stretch>
cell truncation(const type_info& r, types_of t, cells a) {
    if (a[0].null) return null_cell();
    if (is(t[0], L"duration")) {
        return wrapped(r, a[0].i - a[0].i % (ticks_of_day * (Stretch == stretch::week ? 7 : 1)));
    }
    const long long day = day_of(t[0], a[0]);
    if (Stretch == stretch::day) return wrapped(r, day);
    if (Stretch == stretch::week) return wrapped(r, week_of(day) * 7 - 2);
    civil_day c = civil_of(day);
    c.day = 1;
    if (Stretch == stretch::quarter) c.month = (c.month - 1) / 3 * 3 + 1;
    if (Stretch == stretch::year) c.month = 1;
    return wrapped(r, number_of(c));
}

cell trunctime(const type_info& r, types_of t, cells a) {
    if (a[0].null || a[1].null || a[1].i <= 0) return null_cell();
    const __int128 ticks = ticks_of(t[0], a[0]);
    return wrapped(r, ticks - ticks % a[1].i);
}

template <int Months>
cell add_months(const type_info& r, types_of t, cells a) {
    if (a[0].null || a[1].null) return null_cell();
    constexpr long long most = 12000000;
    const __int128 months = a[1].i * Months;
    if (months < -most || months > most) return null_cell();
    civil_day c = civil_of(day_of(t[0], a[0]));
    const long long month = static_cast<long long>(c.year * 12 + c.month - 1 + months);
    c.year = static_cast<long long>(floored(month, 12));
    c.month = static_cast<int>(month - c.year * 12) + 1;
    if (c.year < -4712 || c.year > 1000000) return null_cell();
    // Nothing is taken off October 1582, which lost ten days.
    const bool gregorian = c.year > 1582;
    const bool leap = c.year % 4 == 0 && (!gregorian || c.year % 100 != 0 || c.year % 400 == 0);
    const int length = c.month == 2 ? 28 + leap : julian_month_length(1, c.month);
    c.day = std::min(c.day, length);
    const long long day = number_of(c);
    if (day < 0) return null_cell();
    return wrapped(r, is(t[0], L"date") ? __int128{day} : __int128{day} * ticks_of_day + a[0].i % ticks_of_day);
}

template <long long Ticks>
cell add_ticks(const type_info& r, types_of t, cells a) {
    if (a[0].null || a[1].null) return null_cell();
    const __int128 shift = a[1].i * Ticks;
    if (is(t[0], L"duration")) {
        const __int128 sum = a[0].i + shift;
        const bool fits = sum == static_cast<long long>(sum) && shift == static_cast<long long>(shift);
        return fits ? wrapped(r, sum) : null_cell();
    }
    const bool is_date = is(t[0], L"date");
    const __int128 sum = a[0].i + (is_date ? shift / ticks_of_day : shift);
    return sum >= 0 && sum < date_end * (is_date ? 1 : ticks_of_day) ? wrapped(r, sum) : null_cell();
}

enum class field { year, quarter, month };

template <field Field>
cell field_difference(const type_info& r, types_of t, cells a) {
    if (a[0].null || a[1].null) return null_cell();
    const auto unit = [&](unsigned i) {
        const civil_day c = civil_of(day_of(t[i], a[i]));
        if (Field == field::year) return c.year;
        return Field == field::quarter ? c.year * 4 + (c.month - 1) / 3 : c.year * 12 + c.month;
    };
    return wrapped(r, unit(1) - unit(0));
}

template <long long Ticks, long long Origin = 0>
cell tick_difference(const type_info& r, types_of t, cells a) {
    if (a[0].null || a[1].null) return null_cell();
    const auto unit = [&](unsigned i) { return floored(ticks_of(t[i], a[i]) + Origin, Ticks); };
    const __int128 units = unit(1) - unit(0);
    return units == static_cast<int>(units) ? wrapped(r, units) : null_cell();
}

// A real number of days in ticks, to the nearest.
cell days_in_ticks(double days) {
    const double ticks = days * static_cast<double>(ticks_of_day);
    if (!(std::fabs(ticks) < 0x1p63)) return null_cell();
    const double nearest = std::trunc(ticks < 0 ? ticks - 0.5 : ticks + 0.5);
    return std::fabs(nearest) < 0x1p63 ? cell{false, false, 0, static_cast<__int128>(nearest)} : null_cell();
}

// Of numbers and moments: days where there are numbers, counts among moments.
cell convert(const type_info& r, types_of t, cells a) {
    if (a[0].null) return null_cell();
    const bool from_time = is(t[0], L"date") || is(t[0], L"datetime") || is(t[0], L"duration");
    const bool to_date = r.name == L"date";
    const bool to_time = to_date || r.name == L"datetime" || r.name == L"duration";
    if (from_time && !to_time) {
        if (r.is_real) {
            const double days = is(t[0], L"date") ? static_cast<double>(a[0].i)
                                                  : static_cast<double>(a[0].i) / static_cast<double>(ticks_of_day);
            return real_cell(r.width == 4 ? static_cast<float>(days) : days);
        }
        const __int128 days = is(t[0], L"date") ? a[0].i : a[0].i / ticks_of_day;
        const cell result = wrapped(r, days);
        return result.i == days ? result : null_cell();
    }
    cell ticks{false, false, 0, 0};
    if (from_time) {
        if (to_date && is(t[0], L"date")) return a[0];
        ticks.i = ticks_of(t[0], a[0]);
        if (to_date) ticks.i /= ticks_of_day;
    } else if (to_date) {
        if (a[0].real && !(std::fabs(a[0].d) < 0x1p62)) return null_cell();
        ticks.i = a[0].real ? static_cast<__int128>(std::trunc(a[0].d)) : a[0].i;
    } else {
        if (a[0].real) {
            ticks = days_in_ticks(a[0].d);
            if (ticks.null) return null_cell();
        } else {
            ticks.i = a[0].i * ticks_of_day;
        }
    }
    if (r.name == L"duration") {
        return ticks.i == static_cast<long long>(ticks.i) ? wrapped(r, ticks.i) : null_cell();
    }
    return ticks.i >= 0 && ticks.i < date_end * (to_date ? 1 : ticks_of_day) ? wrapped(r, ticks.i) : null_cell();
}

constexpr long long second = 10000;

const std::map<std::wstring, row_reference>& definitions() {
    static const std::map<std::wstring, row_reference> table = {
        {L"year", day_part<part::year>},
        {L"quarter", day_part<part::quarter>},
        {L"month", day_part<part::month>},
        {L"day", day_part<part::day>},
        {L"yearday", day_part<part::yearday>},
        {L"weekday", day_part<part::weekday>},
        {L"week", day_part<part::week>},
        {L"hour", clock_part<3600 * second, 24>},
        {L"minute", clock_part<60 * second, 60>},
        {L"second", clock_part<second, 60>},
        {L"millisecond", clock_part<10, 1000>},
        {L"truncyear", truncation<stretch::year>},
        {L"truncquarter", truncation<stretch::quarter>},
        {L"truncmonth", truncation<stretch::month>},
        {L"truncweek", truncation<stretch::week>},
        {L"truncday", truncation<stretch::day>},
        {L"trunctime", trunctime},
        {L"addyear", add_months<12>},
        {L"addquarter", add_months<3>},
        {L"addmonth", add_months<1>},
        {L"addweek", add_ticks<7 * ticks_of_day>},
        {L"addday", add_ticks<ticks_of_day>},
        {L"addhour", add_ticks<3600 * second>},
        {L"addminute", add_ticks<60 * second>},
        {L"addsecond", add_ticks<second>},
        {L"addmillisecond", add_ticks<10>},
        {L"diffyear", field_difference<field::year>},
        {L"diffquarter", field_difference<field::quarter>},
        {L"diffmonth", field_difference<field::month>},
        {L"diffweek", tick_difference<7 * ticks_of_day, 2 * ticks_of_day>},
        {L"diffday", tick_difference<ticks_of_day>},
        {L"diffhour", tick_difference<3600 * second>},
        {L"diffminute", tick_difference<60 * second>},
        {L"diffsecond", tick_difference<second>},
        {L"diffmillisecond", tick_difference<10>},
    };
    return table;
}

}  // namespace

row_reference date_reference_of(const std::wstring& operation, const std::vector<const type_info*>& types) {
    const auto found = definitions().find(operation);
    if (found != definitions().end()) return found->second;
    for (const type_info* type : types) {
        if (type->name.starts_with(L"usr")) return nullptr;
    }
    static constexpr std::wstring_view conversions[] = {
        L"date",  L"datetime", L"duration", L"to_date", L"to_datetime", L"to_duration", L"to_int", L"to_real", L"tiny",
        L"short", L"long",     L"bigint",   L"float",   L"double",      L"uchr",        L"usht",   L"ulng",    L"oid"};
    const bool converts = std::find(std::begin(conversions), std::end(conversions), operation) != std::end(conversions);
    return converts && types.size() <= 1 ? convert : nullptr;
}

}  // namespace qve::test
