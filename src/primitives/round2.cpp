#include <cmath>

#include "primitives/arithmetic.h"
#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct round2_op {
    static constexpr const wchar_t* name = L"round2";
    template <class R, class A, class B>
    static constexpr bool makes_nulls = true;

    template <class R, class A, class B>
    static R apply(A a, B b) {
        const signed char digits = narrowed(b);
        const double power = std::pow(10.0, digits);
        const double magnitude = std::floor(std::fabs(static_cast<double>(a)) * power + 0.5) / power;
        const double rounded = std::copysign(magnitude, static_cast<double>(a));
        if constexpr (std::is_floating_point_v<R>) {
            return static_cast<R>(rounded);
        } else {
            return truncated<R>(rounded);
        }
    }

private:
    // The low eight bits of the number's whole part.
    template <class T>
    static signed char narrowed(T digits) {
        if constexpr (std::is_floating_point_v<T>) {
            return static_cast<signed char>(truncated<bigint>(static_cast<double>(digits)));
        } else {
            return static_cast<signed char>(digits);
        }
    }
};

template <class A, class B>
using round2_sig = sig<A, A, B>;

const register_maps<round2_op, for_each_pair<round2_sig, number_atoms>, modes2> registered;

}  // namespace

void define_round2() {}

}  // namespace qve
