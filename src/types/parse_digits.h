#pragma once

#include <cstdint>
#include <cstring>

namespace qve::detail {

/// The pieces that value parsers are built of. All read from `p` and not beyond `end`.

constexpr unsigned digit(char c) {
    return static_cast<unsigned char>(c) - unsigned{'0'};
}
constexpr bool is_digit(char c) {
    return digit(c) < 10;
}
constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

/// True when the eight bytes at `p` are digits; their value goes to `value`.
inline bool eight_digits(const char* p, uint32_t& value) {
    uint64_t chunk;
    std::memcpy(&chunk, p, sizeof chunk);
    // A byte is a digit when its high half is 3 and adding 6 does not carry into it.
    const uint64_t high = (chunk & 0xF0F0F0F0F0F0F0F0) | ((chunk + 0x0606060606060606) & 0xF0F0F0F0F0F0F0F0) >> 4;
    if (high != 0x3333333333333333) return false;
    chunk &= 0x0F0F0F0F0F0F0F0F;
    chunk = (chunk * 10 + (chunk >> 8)) & 0x00FF00FF00FF00FF;
    chunk = (chunk * 100 + (chunk >> 16)) & 0x0000FFFF0000FFFF;
    chunk = (chunk * 10000 + (chunk >> 32)) & 0xFFFFFFFF;
    value = static_cast<uint32_t>(chunk);
    return true;
}

/// Reads digits onto `value` until something else comes, and returns the place behind them. The caller sees to it that
/// there are at most 19 altogether, which fit.
inline const char* read_digits(const char* p, const char* end, uint64_t& value) {
    uint32_t eight;
    while (end - p >= 8 && eight_digits(p, eight)) {
        value = value * 100000000 + eight;
        p += 8;
    }
    for (; p != end && is_digit(*p); ++p) value = value * 10 + digit(*p);
    return p;
}

/// A number of `count` digits (at most 9); -1 when they are not digits.
inline int fixed_digits(const char* p, unsigned count) {
    unsigned value = 0;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned d = digit(p[i]);
        if (d > 9) return -1;
        value = value * 10 + d;
    }
    return static_cast<int>(value);
}

/// Reads from 1 to `most` digits (at most 9); -1 when there are none or more.
inline int some_digits(const char*& p, const char* end, unsigned most) {
    const char* const begin = p;
    unsigned value = 0;
    for (; p != end && is_digit(*p); ++p) {
        if (static_cast<unsigned>(p - begin) == most) return -1;
        value = value * 10 + digit(*p);
    }
    return p == begin ? -1 : static_cast<int>(value);
}

}  // namespace qve::detail
