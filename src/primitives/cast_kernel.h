#pragma once

#include "primitives/conversion.h"
#include "primitives/map_kernel.h"
#include "primitives/text_values.h"

namespace qve {

struct cast_op {
    template <class R, class A>
    static constexpr bool makes_nulls = !conversion_keeps_whole<R, A>;
    // The same type is copied, and the divisions of moments have no vector form.
    template <class R, class A>
    static constexpr bool vectorised_for = !std::is_same_v<R, A> && (is_plain_number<A> || std::is_same_v<A, bit>);

    template <class R, class A>
    [[gnu::always_inline]] static R apply(A a) {
        return converted<R>(a);
    }
};

template <class T>
struct parse_maker {
    template <class R, class A, template <class> class View>
    static constexpr auto entry(sig<R, A>, mode<View>) {
        return kernel_entry<unary_func>{
            &parse_text<T, is_val<View<A>>>, type_name<R>, {type_name<A>}, {View<A>::storage}};
    }
};

/// Registers the conversions to T of all plain types and of text, under the name of the type or that of a function.
template <class T>
class register_cast : public registration {
    template <class A>
    using to_sig = sig<T, A>;

public:
    explicit register_cast(const wchar_t* name = type_name<T>) {
        add(primitive::klassMap, name,
            kernel_span(kernel_table<map_maker<cast_op>, for_each_atom<to_sig, conversion_sources<T>>, modes1>));
        add(primitive::klassMap, name,
            kernel_span(kernel_table<parse_maker<T>, for_each_atom<to_sig, usr_atoms>, modes1>));
    }

    /// Row numbers as values of T.
    void add_row_numbers(const wchar_t* name = type_name<T>) {
        add(primitive::klassMap, name,
            kernel_span(kernel_table<map_maker<cast_op>, for_each_atom<to_sig, index_atoms>, modes<mode<vir>>>));
    }
};

/// The same with row numbers.
template <class T>
class register_index_cast : public register_cast<T> {
public:
    register_index_cast() { this->add_row_numbers(); }
};

}  // namespace qve
