#include "primitives/folding_map.h"

namespace qve {
namespace {

// Makes room for the key below the keys packed so far.
struct radixgrp_op {
    static constexpr null_rule nulls = null_rule::own;

    template <class R, class Old, class A>
    [[gnu::always_inline]] static R apply(Old old, A a) {
        return static_cast<unsigned_of<A>>(raw(a)) | old << (8 * sizeof(A));
    }
};

template <class T>
using radixgrp_sig = sig<ulng, T>;

const registration registered(
    primitive::klassMap, L"radixgrp",
    kernel_span(kernel_table<folding_map_maker<radixgrp_op>,
                             for_each_atom<radixgrp_sig, atoms<bit, tiny, short, uchr, usht>>, modes1>));

}  // namespace

void define_radixgrp() {}

}  // namespace qve
