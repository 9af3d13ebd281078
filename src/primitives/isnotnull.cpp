#include "primitives/select_kernel.h"

namespace qve {
namespace {

struct isnotnull_op {
    static constexpr const wchar_t* name = L"isnotnull";
    static constexpr bool vectorised = true;
    static constexpr null_rule nulls = null_rule::own;
    static constexpr bool never_null = true;
    template <class T>
    using kernel_atom = equivalent<T>;

    template <class R, class A>
    [[gnu::always_inline]] static bit apply(A a) {
        return {static_cast<unsigned char>(!is_null(a))};
    }
};

template <class T>
using null_test = sig<bit, T>;

const register_predicate<isnotnull_op, for_each_atom<null_test, all_atoms>, modes1> registered;

}  // namespace

void define_isnotnull() {}

}  // namespace qve
