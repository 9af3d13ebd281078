#include "primitives/integer_division.h"
#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct div_op {
    static constexpr const wchar_t* name = L"div_";
    template <class R, class A, class B>
    static constexpr bool makes_nulls = true;

    template <class R, class A, class B>
    [[gnu::always_inline]] static R apply(A a, B b) {
        const guarded_division<A, B> guarded(a, b);
        // The quotient of the pair that traps is one more than the type holds; it wraps like every other result.
        return b == 0 ? datatraits<R>::null : static_cast<R>(guarded.dividend / guarded.divisor);
    }
};

template <class A, class B>
using div_sig = sig<wider<A, B>, A, B>;

const register_maps<div_op, joined<for_each_pair<div_sig, signed_atoms>, signatures<sig<ulng, ulng, ulng>>>, modes2>
    registered;

}  // namespace

void define_div_() {}

}  // namespace qve
