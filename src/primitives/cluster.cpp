#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct cluster_op {
    static constexpr const wchar_t* name = L"cluster";

    template <class R, class A, class B, class C>
    [[gnu::always_inline]] static R apply(A a, B shift, C bits) {
        return static_cast<R>((a >> (shift % 32)) & ((1u << (bits % 32)) - 1));
    }
};

template <class T>
using cluster_sig = sig<usht, T, uchr, uchr>;

const register_maps<cluster_op, for_each_atom<cluster_sig, index_atoms>,
                    modes<mode<col, val, val>, mode<vir, val, val>>>
    registered;

}  // namespace

void define_cluster() {}

}  // namespace qve
