#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

namespace qve {

/// Calls `f` with a zero of the signed integer type of `width` bytes: char, short, int or long long.
/// The width must be 1, 2, 4 or 8.
template <class F>
decltype(auto) with_width(unsigned width, F&& f) {
    switch (width) {
        case 1:
            return std::forward<F>(f)(char{});
        case 2:
            return std::forward<F>(f)(short{});
        case 4:
            return std::forward<F>(f)(int{});
        default:
            return std::forward<F>(f)(static_cast<long long>(0));
    }
}

constexpr bool is_integer_width(unsigned width) {
    return width == 1 || width == 2 || width == 4 || width == 8;
}

/// The value in `width` bytes at `bytes`, sign-extended. Needs no alignment.
inline int64_t load_integer(const char* bytes, unsigned width) {
    return with_width(width, [bytes](auto zero) -> int64_t {
        std::memcpy(&zero, bytes, sizeof(zero));
        return zero;
    });
}

/// The low `width` bytes of `value`, to `bytes`.
inline void store_integer(char* bytes, unsigned width, int64_t value) {
    std::memcpy(bytes, &value, width);
}

/// What remains of `value` in `width` bytes, sign-extended.
inline int64_t wrap_integer(int64_t value, unsigned width) {
    return with_width(width, [value](auto zero) -> int64_t { return static_cast<decltype(zero)>(value); });
}

}  // namespace qve
