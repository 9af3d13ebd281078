#include "primitives/arithmetic.h"
#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct divide_op {
    static constexpr const wchar_t* name = L"divide";
    static constexpr bool vectorised = true;
    template <class R, class A, class B>
    static constexpr bool makes_nulls = true;

    template <class R, class A, class B>
    [[gnu::always_inline]] static R apply(A a, B b) {
        const bool zero = b == 0;
        if constexpr (!std::is_same_v<R, duration>) {
            const R quotient = static_cast<R>(a) / static_cast<R>(b);
            return zero ? datatraits<R>::null : quotient;
        } else if constexpr (std::is_floating_point_v<B>) {
            const double divisor = static_cast<double>(b) + zero;
            const duration quotient = rounded_ticks(static_cast<double>(a.value) / divisor);
            return zero ? datatraits<R>::null : quotient;
        } else {
            const unsigned long long magnitude = a.value < 0 ? 0 - static_cast<unsigned long long>(a.value) : a.value;
            const long long wide = b;
            const unsigned long long divisor = wide < 0 ? 0 - static_cast<unsigned long long>(wide) : wide + zero;
            const unsigned long long quotient = magnitude / divisor;
            const bool negative = (a.value < 0) != (wide < 0);
            return zero ? datatraits<R>::null : duration{static_cast<long long>(negative ? 0 - quotient : quotient)};
        }
    }
};

template <class A, class B>
using quotient_type = std::conditional_t<std::is_same_v<sum_type<A, B>, float>, float, double>;
template <class A, class B>
using quotient_sig = sig<quotient_type<A, B>, A, B>;
template <class T>
using divided_duration = sig<duration, duration, T>;

using divide_signatures =
    joined<for_each_pair<quotient_sig, number_atoms>, for_each_atom<divided_duration, number_atoms>>;

const register_maps<divide_op, divide_signatures, modes2> registered;

}  // namespace

void define_divide() {}

}  // namespace qve
