#include "primitives/arithmetic.h"
#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct negate_op {
    static constexpr const wchar_t* name = L"negate";

    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        if constexpr (std::is_floating_point_v<A>) {
            return -a;
        } else {
            return from_raw<R>(static_cast<typename datatraits<R>::raw>(0 - static_cast<wrapping<R>>(raw(a))));
        }
    }
};

const register_maps<negate_op, for_each_atom<same1_sig, joined<number_atoms, atoms<duration>>>, modes1> registered;

}  // namespace

void define_negate() {}

}  // namespace qve
