#include "primitives/date_parts.h"

namespace qve {
namespace {

// The week of the year, of which the first is the one that holds 1 January; of a duration its whole weeks.
struct week_op {
    static constexpr const wchar_t* name = L"week";
    template <class R, class A>
    static constexpr bool vectorised_for = !std::is_same_v<A, duration>;
    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        if constexpr (std::is_same_v<A, duration>) {
            return static_cast<int>(a.value / (7 * ticks_per_day));
        } else {
            const unsigned day = day_number(a);
            return static_cast<int>(week_number(day) - week_number(first_day(civil(day).year, 1))) + 1;
        }
    }
};

const register_maps<week_op, for_each_atom<part_sig, time_atoms>, modes1> registered;

}  // namespace

void define_week() {}

}  // namespace qve
