#include <sys/time.h>

#include <ctime>
#include <istream>
#include <ostream>

#include "types/atom_text.h"
#include "types/datetime.h"

namespace qve {
namespace {

// Writes numbers into a short buffer; the longest text is a duration of the greatest number of days.
class writer {
public:
    void put(char c) { m_text[m_size++] = c; }
    void number(unsigned long long value, unsigned width) {
        char digits[24];
        unsigned n = 0;
        do {
            digits[n++] = static_cast<char>('0' + value % 10);
            value /= 10;
        } while (value);
        for (unsigned i = n; i < width; ++i) put('0');
        while (n) put(digits[--n]);
    }
    void day(const date& d) {
        const calendar::civil_date c = d.civil();
        if (c.year < 0) put('-');
        number(static_cast<unsigned>(c.year < 0 ? -c.year : c.year), 4);
        put('-');
        number(static_cast<unsigned>(c.month), 2);
        put('-');
        number(static_cast<unsigned>(c.day), 2);
    }
    void clock(unsigned long long ticks) {
        number(ticks / ticks_per_hour, 2);
        put(':');
        number(ticks / ticks_per_minute % 60, 2);
        put(':');
        number(ticks / ticks_per_second % 60, 2);
        unsigned fraction = static_cast<unsigned>(ticks % ticks_per_second);
        if (!fraction) return;
        unsigned width = 4;
        while (fraction % 10 == 0) {
            fraction /= 10;
            --width;
        }
        put('.');
        number(fraction, width);
    }
    std::ostream& write(std::ostream& stream) const { return stream.write(m_text, m_size); }

private:
    char m_text[64];
    int m_size = 0;
};

datetime at_time(const timeval& now, const tm& parts) {
    const date day = date::gregoriandate(parts.tm_year + 1900, static_cast<char>(parts.tm_mon + 1),
                                         static_cast<char>(parts.tm_mday));
    const long long ticks = parts.tm_hour * ticks_per_hour + parts.tm_min * ticks_per_minute +
                            parts.tm_sec * ticks_per_second + now.tv_usec / 100;
    return datetime::at(day, static_cast<unsigned long long>(ticks));
}

}  // namespace

datetime datetime::now() {
    timeval now{};
    gettimeofday(&now, nullptr);
    tm parts{};
    localtime_r(&now.tv_sec, &parts);
    return at_time(now, parts);
}

datetime datetime::utc() {
    timeval now{};
    gettimeofday(&now, nullptr);
    tm parts{};
    gmtime_r(&now.tv_sec, &parts);
    return at_time(now, parts);
}

std::ostream& operator<<(std::ostream& stream, const date& value) {
    if (is_null(value)) return stream << "NULL";
    writer out;
    out.day(value);
    return out.write(stream);
}

std::ostream& operator<<(std::ostream& stream, const datetime& value) {
    if (is_null(value)) return stream << "NULL";
    writer out;
    out.day(value.day());
    out.put(' ');
    out.clock(value.ticks());
    return out.write(stream);
}

std::ostream& operator<<(std::ostream& stream, const duration& value) {
    if (is_null(value)) return stream << "NULL";
    writer out;
    const bool negative = value.value < 0;
    const unsigned long long ticks =
        negative ? 0ULL - static_cast<unsigned long long>(value.value) : static_cast<unsigned long long>(value.value);
    if (negative) out.put('-');
    if (ticks >= ticks_per_day) {
        out.number(ticks / ticks_per_day, 1);
        out.put(':');
    }
    out.clock(ticks % ticks_per_day);
    return out.write(stream);
}

std::istream& operator>>(std::istream& stream, date& value) {
    value = read_atom<date>(stream);
    return stream;
}
std::istream& operator>>(std::istream& stream, datetime& value) {
    value = read_atom<datetime>(stream);
    return stream;
}
std::istream& operator>>(std::istream& stream, duration& value) {
    value = read_atom<duration>(stream);
    return stream;
}

}  // namespace qve
