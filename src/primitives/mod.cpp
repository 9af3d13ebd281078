#include "primitives/integer_division.h"
#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct mod_op {
    static constexpr const wchar_t* name = L"mod";
    template <class R, class A, class B>
    static constexpr bool makes_nulls = true;

    template <class R, class A, class B>
    [[gnu::always_inline]] static R apply(A a, B b) {
        const guarded_division<A, B> guarded(a, b);
        // A remainder is smaller than its divisor and so fits the divisor's type.
        const R remainder = static_cast<R>(guarded.trapping ? 0 : guarded.dividend % guarded.divisor);
        return b == 0 ? datatraits<R>::null : remainder;
    }
};

template <class A, class B>
using mod_sig = sig<B, A, B>;

const register_maps<mod_op, joined<for_each_pair<mod_sig, signed_atoms>, signatures<sig<ulng, ulng, ulng>>>, modes2>
    registered;

}  // namespace

void define_mod() {}

}  // namespace qve
