#pragma once

#include "primitives/kernel_table.h"
#include "primitives/text_values.h"

namespace qve {

struct copy_text_maker {
    template <class R, class A, template <class> class View>
    static constexpr auto entry(sig<R, A>, mode<View>) {
        return kernel_entry<unary_func>{&copy_text<is_val<View<A>>>, type_name<R>, {type_name<A>}, {View<A>::storage}};
    }
};

/// Registers the copies of tokens of every width to tokens of type T.
template <class T>
class register_text_cast : public registration {
    template <class A>
    using to_sig = sig<T, A>;

public:
    register_text_cast()
        : registration(primitive::klassMap, type_name<T>,
                       kernel_span(kernel_table<copy_text_maker, for_each_atom<to_sig, usr_atoms>, modes1>)) {}
};

}  // namespace qve
