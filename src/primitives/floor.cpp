#include <cmath>

#include "primitives/arithmetic.h"
#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct floor_op {
    static constexpr const wchar_t* name = L"floor";
    static constexpr bool vectorised = true;

    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        if constexpr (std::is_floating_point_v<A>) {
            return std::floor(a);
        } else {
            return a;
        }
    }
};

const register_maps<floor_op, for_each_atom<same1_sig, number_atoms>, modes1> registered;

}  // namespace

void define_floor() {}

}  // namespace qve
