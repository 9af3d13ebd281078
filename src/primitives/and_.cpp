#include "primitives/select_kernel.h"

namespace qve {
namespace {

struct and_op {
    static constexpr const wchar_t* name = L"and_";
    static constexpr bool vectorised = true;
    static constexpr null_rule nulls = null_rule::own;

    // False and anything is false; otherwise a null makes it unknown.
    template <class R, class A, class B>
    [[gnu::always_inline]] static bit apply(A a, B b) {
        const unsigned char less = a.value < b.value ? a.value : b.value;
        const unsigned char more = a.value < b.value ? b.value : a.value;
        return {static_cast<unsigned char>(less == 0 ? 0 : more)};  // of a null and true the null is more
    }
};

const register_predicate<and_op, signatures<sig<bit, bit, bit>>, modes2> registered;

}  // namespace

void define_and_() {}

}  // namespace qve
