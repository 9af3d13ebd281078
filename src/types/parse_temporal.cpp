#include "types/parse_digits.h"
#include "types/parse_value.h"

namespace qve {
namespace {

using namespace detail;

// A position in the text of a value.
struct reader {
    const char* p;
    const char* end;

    bool done() const { return p == end; }
    bool take(char c) {
        if (p == end || *p != c || !c) return false;
        ++p;
        return true;
    }
    bool take_word(std::string_view lower_case) {
        if (static_cast<size_t>(end - p) < lower_case.size()) return false;
        for (size_t i = 0; i < lower_case.size(); ++i) {
            if (lower(p[i]) != lower_case[i]) return false;
        }
        p += lower_case.size();
        return true;
    }
};

bool store_day(date& value, int year, int month, int day) {
    if (!calendar::is_civil(year, month, day)) return false;
    value = date::gregoriandate(year, static_cast<char>(month), static_cast<char>(day));
    return true;
}

// Year, month and day between separators that `separates` accepts. False when it is no day.
template <class Separates>
bool read_year_first(date& value, reader& in, Separates separates) {
    // "YYYY-MM-DD" is what nearly all dates are.
    if (in.end - in.p >= 10 && separates(in.p[4]) && in.p[7] == in.p[4]) {
        const int year = fixed_digits(in.p, 4);
        const int month = fixed_digits(in.p + 5, 2);
        const int day = fixed_digits(in.p + 8, 2);
        if ((year | month | day) >= 0) {
            in.p += 10;
            return store_day(value, year, month, day);
        }
    }
    const bool negative = in.take('-');
    if (!negative) in.take('+');
    const int year = some_digits(in.p, in.end, 4);
    if (year < 0 || in.done() || !separates(*in.p)) return false;
    const char separator = *in.p++;
    const int month = some_digits(in.p, in.end, 2);
    if (month < 0 || !in.take(separator)) return false;
    const int day = some_digits(in.p, in.end, 2);
    return day >= 0 && store_day(value, negative ? -year : year, month, day);
}

bool read_iso_date(date& value, reader& in, const parse_config& config) {
    return config.date_separator && read_year_first(value, in, [&](char c) { return c == config.date_separator; });
}
bool read_any_date(date& value, reader& in) {
    return read_year_first(value, in, [](char c) { return c == '-' || c == '/' || c == '.'; });
}

constexpr std::string_view months[] = {"january", "february", "march",     "april",   "may",      "june",
                                       "july",    "august",   "september", "october", "november", "december"};

// The number of an English month name or its first three letters; -1 when there is none.
int read_month_name(reader& in) {
    for (int i = 0; i < 12; ++i) {
        if (in.take_word(months[i]) || in.take_word(months[i].substr(0, 3))) return i + 1;
    }
    return -1;
}

bool read_ordered_date(date& value, reader& in, const parse_config& config) {
    const auto separates = [&](char c) {
        return c == '-' || c == '/' || c == '.' || (c == config.date_separator && c) ||
               config.date_alternates.find(c) != std::string::npos;
    };
    int year = 0;
    int month = 0;
    int day = 0;
    char separator = 0;
    for (size_t i = 0; i < config.date_order.size(); ++i) {
        if (i > 0) {
            if (in.done() || (separator ? *in.p != separator : !separates(*in.p))) return false;
            separator = *in.p++;
        }
        const char* const first = in.p;
        int number = -1;
        switch (config.date_order[i]) {
            case parse_config::year:
                number = year = some_digits(in.p, in.end, 4);
                if (number >= 0 && in.p - first == 3) return false;
                if (number >= 0 && in.p - first < 3) year += number <= config.two_digit_year ? 2000 : 1900;
                break;
            case parse_config::month:
                number = month = in.done() || is_digit(*in.p) ? some_digits(in.p, in.end, 2) : read_month_name(in);
                break;
            case parse_config::day:
                number = day = some_digits(in.p, in.end, 2);
                break;
        }
        if (number < 0) return false;
    }
    return store_day(value, year, month, day);
}

// The fraction of a second in ticks, rounded to the nearest; 0 without one. False for a point without digits.
bool read_fraction(unsigned& ticks, reader& in, const parse_config& config) {
    ticks = 0;
    if (!in.take(config.decimal ? config.decimal : '.')) return true;
    const char* const first = in.p;
    unsigned scaled = 0;  // five digits
    unsigned weight = 10000;
    for (; !in.done() && is_digit(*in.p); ++in.p) {
        scaled += digit(*in.p) * weight;
        weight /= 10;
    }
    ticks = (scaled + 5) / 10;
    return in.p != first;
}

// "hh:mm[:ss[.ffff]]", below 24 hours; with `halves` perhaps followed by "AM" or "PM".
bool read_clock(unsigned long long& ticks, reader& in, const parse_config& config, bool halves) {
    const char separator = config.time_separator ? config.time_separator : ':';
    int hour = some_digits(in.p, in.end, 2);
    if (hour < 0 || !in.take(separator)) return false;
    const int minute = some_digits(in.p, in.end, 2);
    if (minute < 0) return false;
    int second = 0;
    unsigned fraction = 0;
    if (in.take(separator)) {
        second = some_digits(in.p, in.end, 2);
        if (second < 0 || !read_fraction(fraction, in, config)) return false;
    }
    if (halves && !in.done()) {
        in.take(' ');
        const bool morning = in.take_word("am");
        const bool evening = !morning && in.take_word("pm");
        if (morning || evening) {
            if (hour < 1 || hour > 12) return false;
            hour = hour % 12 + (evening ? 12 : 0);
        }
    }
    if (hour > 23 || minute > 59 || second > 59) return false;
    ticks = static_cast<unsigned long long>(hour * ticks_per_hour + minute * ticks_per_minute +
                                            second * ticks_per_second + fraction);
    return true;
}

// What may stand between date and time.
bool read_gap(reader& in, const parse_config& config) {
    const bool found = in.take(config.datetime_separator) || in.take('T') || in.take(' ');
    while (in.take(' ')) {
    }
    return found;
}

bool read_moment(datetime& value, const date& day, reader& in, const parse_config& config, bool halves) {
    unsigned long long ticks = 0;
    if (!read_gap(in, config) || !read_clock(ticks, in, config, halves)) return false;
    in.take('Z');
    if (!in.done()) return false;
    value = datetime::at(day, ticks);
    return true;
}

// Adds a number of some unit; false when the sum does not fit.
bool add_units(long long& ticks, long long number, long long unit) {
    long long product = 0;
    return !__builtin_mul_overflow(number, unit, &product) && !__builtin_add_overflow(ticks, product, &ticks);
}

// Up to four numbers; `least` of them must be there.
bool read_duration(duration& value, reader& in, const parse_config& config, unsigned least) {
    constexpr long most_digits = 18;
    const char separator = config.time_separator ? config.time_separator : ':';
    const bool negative = in.take('-');
    long long numbers[4];
    unsigned count = 0;
    do {
        if (count == 4) return false;
        const char* const first = in.p;
        uint64_t number = 0;
        const char* const stop = in.end - first > most_digits ? first + most_digits : in.end;
        in.p = read_digits(first, stop, number);
        if (in.p == first) return false;
        numbers[count++] = static_cast<long long>(number);
    } while (in.take(separator));
    unsigned fraction = 0;
    if (count < least || !read_fraction(fraction, in, config) || !in.done()) return false;
    constexpr long long units[] = {ticks_per_second, ticks_per_minute, ticks_per_hour, ticks_per_day};
    long long ticks = fraction;
    for (unsigned i = 0; i < count; ++i) {
        if (!add_units(ticks, numbers[i], units[count - 1 - i])) return false;
    }
    value = duration{negative ? -ticks : ticks};
    return true;
}

// Runs a reader over the whole text; what it refuses is null.
template <class T, class Read>
bool parse_whole(T& value, unsigned begin, unsigned end, const char* text, Read read) {
    reader in{text + begin, text + end};
    if (read(in) && in.done()) return false;
    value = datatraits<T>::null;
    return true;
}

}  // namespace

bool parse_iso_date_char(date& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    return parse_whole(value, begin, end, text, [&](reader& in) { return read_iso_date(value, in, config); });
}

bool parse_integer_date_char(date& value, unsigned begin, unsigned end, const char* text, const parse_config&) {
    return parse_whole(value, begin, end, text, [&](reader& in) {
        if (in.end - in.p != 8) return false;
        const char* const p = in.p;
        in.p = in.end;
        const int year = fixed_digits(p, 4);
        const int month = fixed_digits(p + 4, 2);
        const int day = fixed_digits(p + 6, 2);
        return (year | month | day) >= 0 && store_day(value, year, month, day);
    });
}

bool parse_ymd_date_char(date& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    return parse_whole(value, begin, end, text, [&](reader& in) { return read_ordered_date(value, in, config); });
}

bool parse_date_char(date& value, unsigned begin, unsigned end, const char* text, const parse_config&) {
    return parse_whole(value, begin, end, text, [&](reader& in) { return read_any_date(value, in); });
}

bool parse_iso_datetime_char(datetime& value, unsigned begin, unsigned end, const char* text,
                             const parse_config& config) {
    return parse_whole(value, begin, end, text, [&](reader& in) {
        date day{};
        return read_iso_date(day, in, config) && read_moment(value, day, in, config, false);
    });
}

bool parse_ymd_datetime_char(datetime& value, unsigned begin, unsigned end, const char* text,
                             const parse_config& config) {
    return parse_whole(value, begin, end, text, [&](reader& in) {
        date day{};
        return read_ordered_date(day, in, config) && read_moment(value, day, in, config, true);
    });
}

bool parse_datetime_char(datetime& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    return parse_whole(value, begin, end, text, [&](reader& in) {
        date day{};
        if (!read_any_date(day, in)) return false;
        value = datetime::at(day);
        return in.done() || read_moment(value, day, in, config, false);
    });
}

bool parse_iso_duration_char(duration& value, unsigned begin, unsigned end, const char* text,
                             const parse_config& config) {
    return parse_whole(value, begin, end, text, [&](reader& in) { return read_duration(value, in, config, 2); });
}

bool parse_duration_char(duration& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    return parse_whole(value, begin, end, text, [&](reader& in) { return read_duration(value, in, config, 1); });
}

}  // namespace qve
