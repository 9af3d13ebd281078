#include "primitives/arithmetic.h"
#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct times_op {
    static constexpr const wchar_t* name = L"times";
    static constexpr bool vectorised = true;
    template <class R, class A, class B>
    static constexpr bool makes_nulls =
        std::is_same_v<R, duration> || std::is_same_v<A, bigint> || std::is_same_v<B, bigint>;
    template <class R, class A, class B>
    static constexpr bool halves = std::is_same_v<R, bigint> && sizeof(A) <= 4 && sizeof(B) <= 4;

    template <class R, class A, class B>
    [[gnu::always_inline]] static R apply(A a, B b) {
        if constexpr (std::is_same_v<B, duration>) {
            return apply<R>(b, a);
        } else if constexpr (halves<R, A, B>) {
            return static_cast<bigint>(a) * static_cast<bigint>(b);  // one instruction for the product of two halves
        } else if constexpr (!std::is_same_v<A, duration>) {
            return static_cast<R>(static_cast<wrapping<R>>(a) * static_cast<wrapping<R>>(b));
        } else if constexpr (std::is_floating_point_v<B>) {
            return rounded_ticks(static_cast<double>(a.value) * static_cast<double>(b));
        } else {
            return {
                static_cast<long long>(static_cast<unsigned long long>(a.value) * static_cast<unsigned long long>(b))};
        }
    }
};

template <class T>
using scaled_left = sig<duration, duration, T>;
template <class T>
using scaled_right = sig<duration, T, duration>;

using times_signatures = joined<for_each_pair<product_sig, number_atoms>, for_each_atom<scaled_left, number_atoms>,
                                for_each_atom<scaled_right, number_atoms>>;

const register_maps<times_op, times_signatures, modes2> registered;

}  // namespace

void define_times() {}

}  // namespace qve
