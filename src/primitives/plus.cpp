#include "primitives/arithmetic.h"
#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct plus_op {
    static constexpr const wchar_t* name = L"plus";
    static constexpr bool vectorised = true;
    template <class R, class A, class B>
    static constexpr bool makes_nulls = is_time<A> || sum_may_wrap<R, A, B>;

    template <class R, class A, class B>
    [[gnu::always_inline]] static R apply(A a, B b) {
        if constexpr (std::is_same_v<R, date>) {
            return moved(a, b);
        } else if constexpr (std::is_same_v<R, duration>) {
            return {static_cast<long long>(static_cast<unsigned long long>(a.value) +
                                           static_cast<unsigned long long>(b.value))};
        } else if constexpr (std::is_same_v<A, date>) {
            return moved(midnight(a), days_in_ticks(b));
        } else if constexpr (std::is_same_v<B, duration>) {
            return moved(a, b);
        } else if constexpr (std::is_same_v<A, datetime>) {
            return moved(a, days_in_ticks(b));
        } else {
            return static_cast<R>(static_cast<wrapping<R>>(a) + static_cast<wrapping<R>>(b));
        }
    }
};

template <class T>
using moved_date = sig<date, date, T>;
template <class T>
using moved_datetime = sig<datetime, datetime, T>;

using plus_signatures =
    joined<for_each_pair<sum_sig, number_atoms>, for_each_atom<same2_sig, index_atoms>,
           for_each_atom<moved_date, signed_atoms>, signatures<sig<datetime, date, float>, sig<datetime, date, double>>,
           for_each_atom<moved_datetime, number_atoms>,
           signatures<sig<datetime, datetime, duration>, sig<duration, duration, duration>>>;

const register_maps<plus_op, plus_signatures, modes2> registered;

}  // namespace

void define_plus() {}

}  // namespace qve
