#include "primitives/date_parts.h"

namespace qve {
namespace {

// Of a moment the day it begins on; a duration loses what is below the unit.
struct truncday_op {
    static constexpr const wchar_t* name = L"truncday";
    template <class R, class A>
    static constexpr bool vectorised_for = !std::is_same_v<A, duration>;
    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        if constexpr (std::is_same_v<A, duration>) {
            return {a.value - a.value % (ticks_per_day)};
        } else {
            const unsigned day = day_number(a);
            return {day};
        }
    }
};

const register_maps<truncday_op, signatures<sig<date, date>, sig<date, datetime>, sig<duration, duration>>, modes1>
    registered;

}  // namespace

void define_truncday() {}

}  // namespace qve
