#include "primitives/select_kernel.h"

namespace qve {
namespace {

struct not_op {
    static constexpr const wchar_t* name = L"not_";
    static constexpr bool vectorised = true;

    template <class R, class A>
    [[gnu::always_inline]] static bit apply(A a) {
        return {static_cast<unsigned char>(a.value ^ 1)};
    }
};

const register_predicate<not_op, signatures<sig<bit, bit>>, modes1> registered;

}  // namespace

void define_not_() {}

}  // namespace qve
