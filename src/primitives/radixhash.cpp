#include "primitives/map_kernel.h"

namespace qve {
namespace {

// The key itself, as an unsigned number of its own width.
struct radixhash_op {
    static constexpr const wchar_t* name = L"radixhash";
    static constexpr null_rule nulls = null_rule::own;

    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        return static_cast<unsigned_of<A>>(raw(a));
    }
};

template <class T>
using radixhash_sig = sig<ulng, T>;

const register_maps<radixhash_op, for_each_atom<radixhash_sig, atoms<bit, tiny, short, int, uchr, usht, ulng, date>>,
                    modes1>
    registered;

}  // namespace

void define_radixhash() {}

}  // namespace qve
