#include "primitives/hash_maps.h"
#include "types/atom_hash.h"

namespace qve {
namespace {

struct hash_op {
    static constexpr const wchar_t* name = L"hash";
    static constexpr bool vectorised = true;
    static constexpr null_rule nulls = null_rule::own;  // a null hashes like the bits it is
    template <class T>
    using kernel_atom = equivalent<T>;

    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        return atom_hash(a);
    }
};

class register_hash : public registration {
public:
    register_hash() {
        add(primitive::klassMap, hash_op::name,
            kernel_span(kernel_table<map_maker<hash_op>, for_each_atom<hash_sig, plain_atoms>, modes1>));
        add(primitive::klassMap, hash_op::name,
            kernel_span(kernel_table<hash_text_maker<false>, for_each_atom<hash_sig, usr_atoms>, modes1>));
    }
};

const register_hash registered;

}  // namespace

void define_hash() {}

}  // namespace qve
