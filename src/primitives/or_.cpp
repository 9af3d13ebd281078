#include "primitives/select_kernel.h"

namespace qve {
namespace {

struct or_op {
    static constexpr const wchar_t* name = L"or_";
    static constexpr bool vectorised = true;
    static constexpr null_rule nulls = null_rule::own;

    // True or anything is true; otherwise a null makes it unknown.
    template <class R, class A, class B>
    [[gnu::always_inline]] static bit apply(A a, B b) {
        const unsigned char either = a.value | b.value;
        return {static_cast<unsigned char>(either & 1 ? 1 : either)};
    }
};

const register_predicate<or_op, signatures<sig<bit, bit, bit>>, modes2> registered;

}  // namespace

void define_or_() {}

}  // namespace qve
