#include "primitives/folding_map.h"
#include "primitives/hash_maps.h"
#include "types/atom_hash.h"

namespace qve {
namespace {

struct rehash_op {
    static constexpr bool vectorised = true;
    static constexpr null_rule nulls = null_rule::own;
    template <class T>
    using kernel_atom = equivalent<T>;

    template <class R, class Old, class A>
    [[gnu::always_inline]] static R apply(Old old, A a) {
        return hash_combine(old, atom_hash(a));
    }
};

class register_rehash : public registration {
public:
    register_rehash() {
        add(primitive::klassMap, L"rehash",
            kernel_span(kernel_table<folding_map_maker<rehash_op>, for_each_atom<hash_sig, plain_atoms>, modes1>));
        add(primitive::klassMap, L"rehash",
            kernel_span(kernel_table<hash_text_maker<true>, for_each_atom<hash_sig, usr_atoms>, modes1>));
    }
};

const register_rehash registered;

}  // namespace

void define_rehash() {}

}  // namespace qve
