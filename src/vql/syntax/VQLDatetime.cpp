#include "vql/syntax/VQLDatetime.h"

#include "types/calendar.h"
#include "types/duration.h"

namespace qve {

namespace {

template <class T>
int ThreeWay(const T& a, const T& b) {
    return a < b ? -1 : b < a ? 1 : 0;
}

}  // namespace

int VQLDate::cmp(const VQLDate& other) const {
    return ThreeWay(*this, other);
}
int VQLDatetime::cmp(const VQLDatetime& other) const {
    return ThreeWay(*this, other);
}
int VQLDuration::cmp(const VQLDuration& other) const {
    return ThreeWay(*this, other);
}

VQLDate VQLDateFromJulianDay(int julianDay) {
    const calendar::civil_date civil = calendar::civil(julianDay);
    return {static_cast<short>(civil.year), static_cast<char>(civil.month), static_cast<char>(civil.day)};
}

VQLDatetime VQLDatetimeFromTicks(unsigned long long ticks) {
    const VQLDate day = VQLDateFromJulianDay(static_cast<int>(ticks / ticks_per_day));
    const auto rest = static_cast<long long>(ticks % ticks_per_day);
    return {day.year,
            day.month,
            day.day,
            static_cast<char>(rest / ticks_per_hour),
            static_cast<char>(rest / ticks_per_minute % 60),
            static_cast<char>(rest / ticks_per_second % 60),
            static_cast<short>(rest % ticks_per_second)};
}

VQLDuration VQLDurationFromTicks(long long ticks) {
    // Division truncates toward zero, so every part has the sign of the whole.
    return {static_cast<int>(ticks / ticks_per_day), static_cast<char>(ticks / ticks_per_hour % 24),
            static_cast<char>(ticks / ticks_per_minute % 60), static_cast<char>(ticks / ticks_per_second % 60),
            static_cast<short>(ticks % ticks_per_second)};
}

}  // namespace qve
