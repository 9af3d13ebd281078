#include <algorithm>

#include "primitives/extreme.h"

namespace qve {
namespace {

// Takes a value where the condition is true and the group has none yet.
template <class T, class View, class Condition, bool ConstantGroup>
unsigned anyif(unsigned n, output_column out, input_column a, input_column condition, input_column groups,
               unsigned const* sel) {
    rows_that_fit(
        n, out.width == sizeof(T) && View::fits(a) && Condition::fits(condition) && groups.width == sizeof(unsigned));
    if (n == 0) return 0;
    unsigned const* group = groups.values<unsigned>();
    const bool one_group = ConstantGroup || groups.flags & column_flags::constant;
    rows_that_fit(n, (one_group ? *group : highest_group(n, group, sel)) < out.limit);
    const View values(a);
    const Condition conditions(condition);
    T* accumulators = out.values<T>();
    for (unsigned k = 0; k < n; ++k) {
        const unsigned i = sel ? sel[k] : k;
        T& accumulator = accumulators[one_group ? *group : group[i]];
        const bool take = (conditions[i].value & 1) & is_null(accumulator);
        accumulator = take ? values[i] : accumulator;
    }
    return n;
}

// For tokens: the rows whose condition is true, and of these any.
template <bool Constant, class Condition, bool ConstantGroup>
unsigned anyif_text(unsigned n, output_column out, input_column a, input_column condition, input_column groups,
                    unsigned const* sel) {
    rows_that_fit(n, Condition::fits(condition));
    if (n == 0) return 0;
    const Condition conditions(condition);
    constexpr unsigned block = 1024;
    unsigned true_rows[block];
    for (unsigned base = 0; base < n; base += block) {
        const unsigned rows = std::min(block, n - base);
        unsigned count = 0;
        for (unsigned k = base; k < base + rows; ++k) {
            const unsigned i = sel ? sel[k] : k;
            true_rows[count] = i;
            count += conditions[i].value & 1;
        }
        aggregate_text(count, out, a, Constant, groups, ConstantGroup, true_rows, text_pick::any);
    }
    return n;
}

struct anyif_maker {
    template <class R, class A, template <class> class View, template <class> class Condition,
              template <class> class Group>
    static constexpr auto entry(sig<R, A>, mode<View, Condition, Group>) {
        using T = equivalent<A>;
        return kernel_entry<ternary_func>{&anyif<T, View<T>, Condition<bit>, is_val<Group<unsigned>>>,
                                          type_name<R>,
                                          {type_name<A>, L"bit", L"ulng"},
                                          {View<A>::storage, Condition<bit>::storage, Group<unsigned>::storage}};
    }
};
struct anyif_text_maker {
    template <class R, class A, template <class> class View, template <class> class Condition,
              template <class> class Group>
    static constexpr auto entry(sig<R, A>, mode<View, Condition, Group>) {
        return kernel_entry<ternary_func>{&anyif_text<is_val<View<A>>, Condition<bit>, is_val<Group<unsigned>>>,
                                          type_name<R>,
                                          {type_name<A>, L"bit", L"ulng"},
                                          {View<A>::storage, Condition<bit>::storage, Group<unsigned>::storage}};
    }
};

using anyif_modes = modes<mode<col, col, col>, mode<col, val, col>, mode<val, col, col>, mode<val, val, col>,
                          mode<col, col, val>, mode<col, val, val>, mode<val, col, val>, mode<val, val, val>>;

class register_anyif : public registration {
public:
    register_anyif() {
        add(primitive::klassAggregate, L"anyif",
            kernel_span(kernel_table<anyif_maker, extreme_signatures, anyif_modes>));
        add(primitive::klassAggregate, L"anyif",
            kernel_span(kernel_table<anyif_text_maker, extreme_text_signatures, anyif_modes>));
    }
};

const register_anyif registered;

}  // namespace

void define_anyif() {}

}  // namespace qve
