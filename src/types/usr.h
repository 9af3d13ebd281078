#pragma once

#include <compare>

namespace qve {

/// A token of a heap-stored value, T an unsigned integer of 1, 2, 4 or 8 bytes. All ones is null. Tokens compare as
/// numbers only where their dictionary says that this means something.
template <class T>
struct usr {
    T value;

    constexpr auto operator<=>(const usr&) const = default;
};

using usr1 = usr<unsigned char>;
using usr2 = usr<unsigned short>;
using usr4 = usr<unsigned int>;
using usr8 = usr<unsigned long long>;

}  // namespace qve
