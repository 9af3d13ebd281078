#pragma once

#include "primitives/arithmetic.h"

namespace qve {

/// The operands of an integer division in one type, mended so that the machine never traps: nulls become 0 (their bits
/// are the most negative value), a divisor of 0 becomes 1. `trapping` tells of the pair MIN / -1, which must not be
/// divided.
template <class A, class B>
struct guarded_division {
    using wide = std::conditional_t<(sizeof(A) >= sizeof(B)), A, B>;
    wide dividend;
    wide divisor;
    bool trapping;

    [[gnu::always_inline]] guarded_division(A a, B b)
        : dividend(is_null(a) ? wide(0) : static_cast<wide>(a)),
          divisor(b == 0 ? wide(1) : static_cast<wide>(b)),
          trapping(false) {
        if constexpr (std::is_signed_v<wide>) {
            trapping = dividend == std::numeric_limits<wide>::min() && divisor == wide(-1);
            if (trapping) divisor = 1;
        }
    }
};

template <class A, class B>
using wider = std::conditional_t<(sizeof(A) >= sizeof(B)), A, B>;

}  // namespace qve
