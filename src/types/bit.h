#pragma once

#include <compare>

namespace qve {

/// A truth value: 0 false, 1 true, 128 null. Bit 0 says "true" also of a null, so a branch-free select may test it
/// alone.
struct bit {
    unsigned char value;

    constexpr bool operator==(const bit&) const = default;
};

}  // namespace qve
