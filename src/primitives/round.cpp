#include <cmath>

#include "primitives/arithmetic.h"
#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct round_op {
    static constexpr const wchar_t* name = L"round";
    static constexpr bool vectorised = true;

    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        if constexpr (std::is_floating_point_v<A>) {
            return rounded(a);
        } else {
            return a;
        }
    }

private:
    // Halves go away from zero. Adding just under a half keeps 0.49999999999999994 from rounding up.
    template <class T>
    static T rounded(T a) {
        constexpr T half = std::is_same_v<T, float> ? T(0.49999997f) : T(0.49999999999999994);
        return std::trunc(a + std::copysign(half, a));
    }
};

const register_maps<round_op, for_each_atom<same1_sig, number_atoms>, modes1> registered;

}  // namespace

void define_round() {}

}  // namespace qve
