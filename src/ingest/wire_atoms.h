#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <type_traits>
#include <utility>

#include "server/protocol/QVE_Value.h"
#include "types/calendar.h"
#include "types/datatraits.h"

namespace qve {

/// The value of an atom type T that a wire value stands for; nothing for a null, a value of another kind, one that T
/// cannot hold and a payload that is none. Numbers are taken from any numeric type that holds them exactly, and floats
/// from any number.
template <class T>
std::optional<T> AtomOfWire(const QVE_Value& value);

namespace detail {

/// The payload as a P; nothing when it has another size.
template <class P>
std::optional<P> WirePayload(const QVE_Value& value) {
    if (value.size != sizeof(P)) return std::nullopt;
    P payload;
    std::memcpy(&payload, value.data, sizeof payload);
    return payload;
}

/// Calls `take` with the number that a wire value holds, in its own type; nothing when it holds none.
template <class R, class Take>
std::optional<R> WithWireNumber(const QVE_Value& value, Take take) {
    const auto read = [&]<class P>(P) -> std::optional<R> {
        const std::optional<P> number = WirePayload<P>(value);
        return number ? take(*number) : std::nullopt;
    };
    switch (value.GetType()) {
        case QVE_TypeInt8:
            return read(std::int8_t{});
        case QVE_TypeUInt8:
            return read(std::uint8_t{});
        case QVE_TypeInt16:
            return read(std::int16_t{});
        case QVE_TypeUInt16:
            return read(std::uint16_t{});
        case QVE_TypeInt32:
            return read(std::int32_t{});
        case QVE_TypeUInt32:
            return read(std::uint32_t{});
        case QVE_TypeInt64:
            return read(std::int64_t{});
        case QVE_TypeUInt64:
            return read(std::uint64_t{});
        case QVE_TypeFloat:
            return read(float{});
        case QVE_TypeDouble:
            return read(double{});
        default:
            return std::nullopt;
    }
}

template <class T>
std::optional<T> NumberOfWire(const QVE_Value& value) {
    return WithWireNumber<T>(value, []<class P>(P number) -> std::optional<T> {
        if constexpr (std::is_floating_point_v<T>) {
            return static_cast<T>(number);
        } else if constexpr (std::is_integral_v<P>) {
            if (!std::in_range<std::conditional_t<std::is_same_v<T, char>, signed char, T>>(number))
                return std::nullopt;
            return static_cast<T>(number);
        } else {
            return std::nullopt;
        }
    });
}

template <class Wire>
std::optional<date> DayOfWire(const Wire& wire) {
    if (!calendar::is_civil(wire.year, wire.month, wire.day)) return std::nullopt;
    return date{static_cast<unsigned>(calendar::days(wire.year, wire.month, wire.day))};
}

inline std::optional<datetime> MomentOfWire(const QVE_WireDatetime& wire) {
    const std::optional<date> day = DayOfWire(wire);
    const bool inDay = wire.hour < 24 && wire.minute < 60 && wire.second < 60 && wire.fraction >= 0 &&
                       wire.fraction < ticks_per_second;
    if (!day || !inDay) return std::nullopt;
    return datetime::at(*day,
                        static_cast<unsigned long long>(wire.hour * ticks_per_hour + wire.minute * ticks_per_minute +
                                                        wire.second * ticks_per_second + wire.fraction));
}

}  // namespace detail

template <class T>
std::optional<T> AtomOfWire(const QVE_Value& value) {
    if (value.IsNull()) return std::nullopt;
    const QVE_Type type = value.GetType();
    if constexpr (std::is_same_v<T, bit>) {
        const auto byte = type == QVE_TypeBit ? detail::WirePayload<std::uint8_t>(value) : std::nullopt;
        if (!byte || *byte > 1) return std::nullopt;
        return bit{*byte};
    } else if constexpr (std::is_same_v<T, date>) {
        const auto wire = type == QVE_TypeDate ? detail::WirePayload<QVE_WireDate>(value) : std::nullopt;
        return wire ? detail::DayOfWire(*wire) : std::nullopt;
    } else if constexpr (std::is_same_v<T, datetime>) {
        if (type == QVE_TypeDate) {
            const std::optional<date> day = AtomOfWire<date>(value);
            return day ? std::optional(datetime::at(*day)) : std::nullopt;
        }
        const auto wire = type == QVE_TypeDatetime ? detail::WirePayload<QVE_WireDatetime>(value) : std::nullopt;
        return wire ? detail::MomentOfWire(*wire) : std::nullopt;
    } else if constexpr (std::is_same_v<T, duration>) {
        const auto wire = type == QVE_TypeDuration ? detail::WirePayload<QVE_WireDuration>(value) : std::nullopt;
        if (!wire) return std::nullopt;
        return duration{wire->days * ticks_per_day + wire->hours * ticks_per_hour + wire->minutes * ticks_per_minute +
                        wire->seconds * ticks_per_second + wire->fraction};
    } else {
        return detail::NumberOfWire<T>(value);
    }
}

}  // namespace qve
