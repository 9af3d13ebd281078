#pragma once

#include "primitives/kernel_table.h"

namespace qve {

/// Which value of a group an aggregate over tokens keeps.
enum class text_pick { least, greatest, any };

/// Keeps for each group the least or greatest value in the collation of the type, or the first one that is not null.
/// The accumulators are tokens of the output's heap.
unsigned aggregate_text(unsigned n, output_column out, input_column a, bool a_constant, input_column groups,
                        bool constant_group, unsigned const* sel, text_pick pick);

template <text_pick Pick>
struct text_aggregate_maker {
    template <bool Constant, bool ConstantGroup>
    static unsigned run(unsigned n, output_column out, input_column a, input_column groups, unsigned const* sel) {
        return aggregate_text(n, out, a, Constant, groups, ConstantGroup, sel, Pick);
    }
    template <class R, class A, template <class> class View, template <class> class Group>
    static constexpr auto entry(sig<R, A>, mode<View, Group>) {
        return kernel_entry<binary_func>{&run<is_val<View<A>>, is_val<Group<unsigned>>>,
                                         type_name<R>,
                                         {type_name<A>, L"ulng"},
                                         {View<A>::storage, Group<unsigned>::storage}};
    }
};

}  // namespace qve
