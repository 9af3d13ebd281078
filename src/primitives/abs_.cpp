#include <bit>

#include "primitives/arithmetic.h"
#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct abs_op {
    static constexpr const wchar_t* name = L"abs_";
    static constexpr bool vectorised = true;

    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        if constexpr (std::is_floating_point_v<A>) {
            using bits = unsigned_of<A>;
            return std::bit_cast<A>(static_cast<bits>(std::bit_cast<bits>(a) & (~bits(0) >> 1)));
        } else {
            // The null is its own opposite and stays null.
            const auto x = static_cast<wrapping<R>>(a);
            return static_cast<R>(a < 0 ? 0 - x : x);
        }
    }
};

const register_maps<abs_op, for_each_atom<same1_sig, number_atoms>, modes1> registered;

}  // namespace

void define_abs_() {}

}  // namespace qve
