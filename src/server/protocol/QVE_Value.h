#pragma once

#include <cstdint>
#include <iosfwd>

namespace qve {

/// The low byte of a value's type word.
enum QVE_Type : std::uint32_t {
    QVE_TypeInt8 = 1,
    QVE_TypeUInt8 = 2,
    QVE_TypeInt16 = 3,
    QVE_TypeUInt16 = 4,
    QVE_TypeInt32 = 5,
    QVE_TypeUInt32 = 6,
    QVE_TypeInt64 = 7,
    QVE_TypeUInt64 = 8,
    QVE_TypeFloat = 9,
    QVE_TypeDouble = 10,
    QVE_TypeBit = 11,
    QVE_TypeDate = 12,
    QVE_TypeDatetime = 13,
    QVE_TypeDuration = 14,
    QVE_TypeText8 = 15,
    QVE_TypeText16 = 16,
    QVE_TypeSpatial = 17,
};

/// A view of one value: it owns nothing. The payload of a value that was read points into the message it was read from,
/// and need not be aligned there in memory.
struct QVE_Value {
    /// In the type word: the value is NULL.
    static constexpr std::uint32_t s_null = 0x100;

    std::uint32_t type = s_null;  ///< a QVE_Type, perhaps with s_null
    std::uint32_t size = 0;       ///< bytes of the payload; 0 for NULL
    const void* data = nullptr;   ///< null for NULL

    bool IsNull() const noexcept { return (type & s_null) != 0; }
    QVE_Type GetType() const noexcept { return static_cast<QVE_Type>(type & 0xFF); }

    /// Whether the payload of a type starts at a multiple of 8 in the message.
    static constexpr bool IsAlignedTo8(std::uint32_t type) noexcept {
        return type == QVE_TypeInt64 || type == QVE_TypeUInt64 || type == QVE_TypeDouble;
    }
};

/// Payload of a date, 8 bytes. The last two are zero.
struct QVE_WireDate {
    std::int32_t year;
    std::uint8_t month;
    std::uint8_t day;
    std::uint8_t unused[2];
};

/// Payload of a datetime, 12 bytes. The fraction counts tenths of a millisecond.
struct QVE_WireDatetime {
    std::int32_t year;
    std::uint8_t month;
    std::uint8_t day;
    std::uint8_t hour;
    std::uint8_t minute;
    std::uint8_t second;
    std::uint8_t unused;
    std::int16_t fraction;
};

/// Payload of a duration, 12 bytes. Every part carries the sign of the duration, the one-byte parts in two's
/// complement.
struct QVE_WireDuration {
    std::int32_t days;
    std::int8_t hours;
    std::int8_t minutes;
    std::int8_t seconds;
    std::uint8_t unused;
    std::int16_t fraction;
    std::uint8_t padding[2];
};

static_assert(sizeof(QVE_WireDate) == 8 && sizeof(QVE_WireDatetime) == 12 && sizeof(QVE_WireDuration) == 12);

/// Prints the value as text; "NULL" for a null, "Unknown type!" for a type that is none.
std::ostream& operator<<(std::ostream& stream, const QVE_Value& value);

}  // namespace qve
