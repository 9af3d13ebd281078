#pragma once

#include "primitives/comparison.h"
#include "primitives/conversion.h"
#include "primitives/value_order.h"

namespace qve {

// The greatest and the least of two values, as maps. Numbers widen; a NaN is above every number.

namespace detail {

template <class A, class B>
constexpr auto winner_of() {
    if constexpr (std::is_same_v<A, B>) {
        return A();
    } else if constexpr (is_time<A>) {
        return datetime();
    } else {
        return decltype(common_of(A(), B()))();
    }
}

}  // namespace detail

template <bool Greatest>
struct winner_op {
    static constexpr bool vectorised = true;
    template <class R, class A, class B>
    static constexpr bool makes_nulls = !conversion_keeps_whole<R, A> || !conversion_keeps_whole<R, B>;

    template <class R, class A, class B>
    [[gnu::always_inline]] static R apply(A a, B b) {
        const R x = converted<R>(a);
        const R y = converted<R>(b);
        const bool take = Greatest ? value_less(raw(x), raw(y)) : value_less(raw(y), raw(x));
        const R result = take ? y : x;
        // A value without a place in the common type has no order.
        if constexpr (makes_nulls<R, A, B>) return is_null(x) || is_null(y) ? datatraits<R>::null : result;
        return result;
    }
};

template <class A, class B>
using winner_sig = sig<decltype(detail::winner_of<A, B>()), A, B>;
template <class T>
using winner_same_sig = sig<T, T, T>;

using winner_signatures = joined<for_each_atom<winner_same_sig, joined<atoms<bit>, time_atoms, index_atoms>>,
                                 for_each_pair<winner_sig, number_atoms>,
                                 signatures<sig<datetime, date, datetime>, sig<datetime, datetime, date>>>;

/// The winning token of each row, in the collation of the type.
unsigned choose_text(unsigned n, output_column out, input_column a, bool a_constant, input_column b, bool b_constant,
                     unsigned const* sel, bool greatest);

template <bool Greatest>
struct text_winner_maker {
    template <bool AConstant, bool BConstant>
    static unsigned run(unsigned n, output_column out, input_column a, input_column b, unsigned const* sel) {
        return choose_text(n, out, a, AConstant, b, BConstant, sel, Greatest);
    }
    template <class R, class A, class B, template <class> class VA, template <class> class VB>
    static constexpr auto entry(sig<R, A, B>, mode<VA, VB>) {
        // Tokens of one and two bytes have no type of two bytes to meet in.
        constexpr const wchar_t* result = sizeof(A) == 1 && sizeof(B) == 1   ? L"usr1"
                                          : sizeof(A) <= 2 && sizeof(B) <= 2 ? L"usr4"
                                                                             : L"usr8";
        return kernel_entry<binary_func>{
            &run<is_val<VA<A>>, is_val<VB<B>>>, result, {type_name<A>, type_name<B>}, {VA<A>::storage, VB<B>::storage}};
    }
};

/// Registers the maps over plain values and over text.
template <bool Greatest>
class register_winner : public registration {
public:
    explicit register_winner(const wchar_t* name) {
        add(primitive::klassMap, name,
            kernel_span(kernel_table<map_maker<winner_op<Greatest>>, winner_signatures, modes2>));
        add(primitive::klassMap, name,
            kernel_span(kernel_table<text_winner_maker<Greatest>, comparable_text_signatures, modes2>));
    }
};

}  // namespace qve
