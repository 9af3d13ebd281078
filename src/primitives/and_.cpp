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
        const unsigned char either = a.value | b.value;
        const bool unknown = (either & 128) && a.value != 0 && b.value != 0;
        return {static_cast<unsigned char>(unknown ? 128 : a.value & b.value & 1)};
    }
};

const register_predicate<and_op, signatures<sig<bit, bit, bit>>, modes2> registered;

}  // namespace

void define_and_() {}

}  // namespace qve
