#include <cmath>

#include "primitives/arithmetic.h"
#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct ceil_op {
    static constexpr const wchar_t* name = L"ceil";
    static constexpr bool vectorised = true;

    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        if constexpr (std::is_floating_point_v<A>) {
            return std::ceil(a);
        } else {
            return a;
        }
    }
};

const register_maps<ceil_op, for_each_atom<same1_sig, number_atoms>, modes1> registered;

}  // namespace

void define_ceil() {}

}  // namespace qve
