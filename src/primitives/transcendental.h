#pragma once

#include "primitives/map_kernel.h"

namespace qve {

/// The types of a function of the real numbers: "float" stays, everything else is computed as "double".
template <class T>
using real_sig = sig<std::conditional_t<std::is_same_v<T, float>, float, double>, T>;

/// The map of a real function; Op has `name` and `template <class T> static T of(T x)`, T float or double. Results that
/// the C library calls undefined are NaN, infinite ones infinite; neither is null.
template <class Op>
struct real_function {
    static constexpr const wchar_t* name = Op::name;

    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        return Op::of(static_cast<R>(a));
    }
};

template <class Op>
using register_real_function = register_maps<real_function<Op>, for_each_atom<real_sig, number_atoms>, modes1>;

}  // namespace qve
