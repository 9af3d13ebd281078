#pragma once

#include "primitives/capacity.h"
#include "primitives/kernel_table.h"

namespace qve {

/// Compares the keys of rows with the keys that a table holds for their groups: out[i] is true where key[i] differs
/// from table[group[i]], of which two nulls do not. With `Again` it is ORed into what the output holds. Plain keys
/// compare bit for bit, so that a key equals itself whatever it is.
template <class U, class View, bool Again, bool ConstantGroup>
unsigned check_keys(unsigned n, output_column out, input_column key, input_column table, input_column groups,
                    unsigned const* sel) {
    n = rows_that_fit(n, out, 1, sel);
    rows_that_fit(n, View::fits(key) && table.width == sizeof(U) && groups.width == sizeof(unsigned));
    if (n == 0) return 0;
    const View keys(key);
    const U* stored = table.values<U>();
    unsigned const* group = groups.values<unsigned>();
    unsigned char* differs = out.values<unsigned char>();
    const bool one_group = ConstantGroup || groups.flags & column_flags::constant;
#pragma GCC ivdep
    for (unsigned k = 0; k < n; ++k) {
        const unsigned i = sel ? sel[k] : k;
        const unsigned char different = keys[i] != stored[one_group ? *group : group[i]];
        differs[i] = Again ? differs[i] | different : different;
    }
    if (out.flags) *out.flags |= column_flags::not_null;
    return n;
}

/// The same for tokens, which are compared by value.
unsigned check_text_keys(unsigned n, output_column out, input_column key, bool constant, input_column table,
                         input_column groups, bool constant_group, unsigned const* sel, bool again);

template <bool Again>
struct check_maker {
    template <class R, class A, template <class> class View, template <class> class Table, template <class> class Group>
    static constexpr auto entry(sig<R, A>, mode<View, Table, Group>) {
        using U = unsigned_of<A>;
        return kernel_entry<ternary_func>{&check_keys<U, View<U>, Again, is_val<Group<unsigned>>>,
                                          L"bit",
                                          {type_name<A>, type_name<A>, L"ulng"},
                                          {View<A>::storage, L"col", Group<unsigned>::storage}};
    }
};
template <bool Again>
struct check_text_maker {
    template <bool Constant, bool ConstantGroup>
    static unsigned run(unsigned n, output_column out, input_column key, input_column table, input_column groups,
                        unsigned const* sel) {
        return check_text_keys(n, out, key, Constant, table, groups, ConstantGroup, sel, Again);
    }
    template <class R, class A, class B, template <class> class View, template <class> class Table,
              template <class> class Group>
    static constexpr auto entry(sig<R, A, B>, mode<View, Table, Group>) {
        return kernel_entry<ternary_func>{&run<is_val<View<A>>, is_val<Group<unsigned>>>,
                                          L"bit",
                                          {type_name<A>, type_name<B>, L"ulng"},
                                          {View<A>::storage, L"col", Group<unsigned>::storage}};
    }
};

template <class T>
using check_sig = sig<bit, T>;
template <class A, class B>
using check_text_sig = sig<bit, A, B>;
using check_modes = modes<mode<col, col, col>, mode<val, col, col>, mode<col, col, val>, mode<val, col, val>>;

template <bool Again>
class register_check : public registration {
public:
    explicit register_check(const wchar_t* name) {
        add(primitive::klassAggregate, name,
            kernel_span(kernel_table<check_maker<Again>, for_each_atom<check_sig, plain_atoms>, check_modes>));
        add(primitive::klassAggregate, name,
            kernel_span(kernel_table<check_text_maker<Again>, for_each_pair<check_text_sig, usr_atoms>, check_modes>));
    }
};

}  // namespace qve
