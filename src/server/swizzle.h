#pragma once

#include "server/protocol/QVE_Value.h"
#include "types/calendar.h"
#include "types/date.h"
#include "types/datetime.h"
#include "types/duration.h"

namespace qve::Server {

/// The wire payloads of values that are not null.
inline QVE_WireDate SwizzleAtom(date value) {
    const calendar::civil_date civil = value.civil();
    return {civil.year, static_cast<std::uint8_t>(civil.month), static_cast<std::uint8_t>(civil.day), {}};
}

inline QVE_WireDatetime SwizzleAtom(datetime value) {
    constexpr auto perDay = static_cast<unsigned long long>(ticks_per_day);
    const calendar::civil_date civil = calendar::civil(static_cast<int>(value.value / perDay));
    const auto ticks = static_cast<unsigned>(value.value % perDay);
    return {civil.year,
            static_cast<std::uint8_t>(civil.month),
            static_cast<std::uint8_t>(civil.day),
            static_cast<std::uint8_t>(ticks / ticks_per_hour),
            static_cast<std::uint8_t>(ticks / ticks_per_minute % 60),
            static_cast<std::uint8_t>(ticks / ticks_per_second % 60),
            0,
            static_cast<std::int16_t>(ticks % ticks_per_second)};
}

inline QVE_WireDuration SwizzleAtom(duration value) {
    // Division truncates towards 0: every part takes the sign of the whole.
    const long long ticks = value.value;
    return {static_cast<std::int32_t>(ticks / ticks_per_day),
            static_cast<std::int8_t>(ticks / ticks_per_hour % 24),
            static_cast<std::int8_t>(ticks / ticks_per_minute % 60),
            static_cast<std::int8_t>(ticks / ticks_per_second % 60),
            0,
            static_cast<std::int16_t>(ticks % ticks_per_second),
            {}};
}

}  // namespace qve::Server
