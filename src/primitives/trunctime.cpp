#include "primitives/date_parts.h"

namespace qve {
namespace {

// Cuts down to a multiple of a number of ticks: a moment since midnight of day 0, a duration towards 0.
struct trunctime_op {
    static constexpr const wchar_t* name = L"trunctime";
    template <class R, class A, class B>
    static constexpr bool makes_nulls = true;

    template <class R, class A, class B>
    static R apply(A a, B b) {
        const long long ticks = b;
        const long long divisor = ticks > 0 ? ticks : 1;
        if constexpr (std::is_same_v<A, date>) {
            const datetime t = midnight(a);
            return ticks > 0 ? datetime{t.value - t.value % divisor} : datatraits<R>::null;
        } else {
            return ticks > 0 ? R{a.value - a.value % divisor} : datatraits<R>::null;
        }
    }
};

template <class T>
using of_date = sig<datetime, date, T>;
template <class T>
using of_datetime = sig<datetime, datetime, T>;
template <class T>
using of_duration = sig<duration, duration, T>;

const register_maps<trunctime_op,
                    joined<for_each_atom<of_date, signed_atoms>, for_each_atom<of_datetime, signed_atoms>,
                           for_each_atom<of_duration, signed_atoms>>,
                    modes2>
    registered;

}  // namespace

void define_trunctime() {}

}  // namespace qve
