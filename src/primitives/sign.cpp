#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct sign_op {
    static constexpr const wchar_t* name = L"sign";

    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        return static_cast<R>((a > 0) - (a < 0));
    }
};

template <class T>
using sign_sig = sig<bigint, T>;

const register_maps<sign_op, for_each_atom<sign_sig, number_atoms>, modes1> registered;

}  // namespace

void define_sign() {}

}  // namespace qve
