#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct pageoffset_op {
    static constexpr const wchar_t* name = L"pageoffset";

    template <class R, class A, class B>
    [[gnu::always_inline]] static R apply(A a, B bits) {
        return a & ((1u << (bits % 32)) - 1);
    }
};

template <class T>
using pageoffset_sig = sig<oid, T, uchr>;

const register_maps<pageoffset_op, for_each_atom<pageoffset_sig, index_atoms>, modes<mode<col, val>, mode<vir, val>>>
    registered;

}  // namespace

void define_pageoffset() {}

}  // namespace qve
