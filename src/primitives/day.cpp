#include "primitives/date_parts.h"

namespace qve {
namespace {

// The day of the month; of a duration its whole days.
struct day_op {
    static constexpr const wchar_t* name = L"day";
    template <class R, class A>
    static constexpr bool vectorised_for = !std::is_same_v<A, duration>;
    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        if constexpr (std::is_same_v<A, duration>) {
            return static_cast<int>(a.value / ticks_per_day);
        } else {
            return civil(day_number(a)).day;
        }
    }
};

const register_maps<day_op, for_each_atom<part_sig, time_atoms>, modes1> registered;

}  // namespace

void define_day() {}

}  // namespace qve
