#include "primitives/extreme.h"

namespace qve {
namespace {

struct any_op {
    static constexpr bool starts_null = true;
    static constexpr text_pick pick = text_pick::any;
    template <class T>
    using kernel_atom = equivalent<T>;

    template <class P>
    static constexpr P identity() {
        return datatraits<P>::null;
    }
    template <class P>
    [[gnu::always_inline]] static P merge(P left, P right) {
        return is_null(left) ? right : left;
    }
    template <class P, class A>
    [[gnu::always_inline]] static P lift(A value) {
        return value;
    }
};

const register_extreme<any_op> registered(L"any");

}  // namespace

void define_any() {}

}  // namespace qve
