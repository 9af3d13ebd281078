#include "primitives/kernel_table.h"
#include "primitives/text_values.h"

namespace qve {
namespace {

struct print_maker {
    template <class R, class A, template <class> class View>
    static constexpr auto entry(sig<R, A>, mode<View>) {
        unary_func function;
        if constexpr (is_usr<A>) {
            function = &copy_text<is_val<View<A>>>;
        } else {
            function = &print_text<A, is_val<View<A>>>;
        }
        return kernel_entry<unary_func>{function, type_name<R>, {type_name<A>}, {View<A>::storage}};
    }
};

template <class T>
using to_str_sig = sig<usr4, T>;

const registration registered(primitive::klassMap, L"to_str",
                              kernel_span(kernel_table<print_maker, for_each_atom<to_str_sig, all_atoms>, modes1>));

}  // namespace

void define_to_str() {}

}  // namespace qve
