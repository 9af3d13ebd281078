#pragma once

#include <algorithm>

#include "primitives/map_kernel.h"
#include "primitives/positions.h"

namespace qve {

/// The select of a predicate Op, which gives a bit. Dense rows are compared a block at a time by the map's loop, into
/// truth values on the stack, and these are turned into positions; selected rows go one by one, without a branch.
template <class Op, class... Views>
struct select_kernel {
    using map = map_kernel<Op, bit, Views...>;
    static constexpr unsigned block = 1024;

    static unsigned dense_rows(bool whole, unsigned n, unsigned* out, Views... views) {
        bit hits[block];
        unsigned count = 0;
        for (unsigned base = 0; base < n; base += block) {
            const unsigned rows = std::min(block, n - base);
            map::dense_rows(whole, rows, hits, from(views, base)...);
            count += positions_of(rows, hits, base, out + count);
        }
        return count;
    }

    static unsigned selected_rows(unsigned n, unsigned* out, unsigned const* sel, Views... views) {
        unsigned count = 0;
        for (unsigned k = 0; k < n; ++k) {
            const unsigned i = sel ? sel[k] : k;
            const bit hit = map::template row<true>(views[i]...);
            out[count] = i;  // `out` may be `sel` itself: what is overwritten has been read
            count += hit.value & 1;
        }
        return count;
    }

    template <class>
    using input = input_column;

    static unsigned run(unsigned n, output_column out, input<Views>... arguments, unsigned const* sel) {
        n = rows_that_fit(n, out.width == sizeof(unsigned) && out.limit >= n);
        rows_that_fit(n, (Views::fits(arguments) && ... && true));
        if (n == 0) return 0;
        return walk(n, out.values<unsigned>(), sel, Views(arguments)...);
    }

    static unsigned walk(unsigned n, unsigned* out, unsigned const* sel, Views... views) {
        const bool whole = (views.whole && ... && true);
        if constexpr (!(is_val<Views> && ...)) {
            if (!sel) return dense_rows(whole, n, out, views...);
        }
        return selected_rows(n, out, sel, views...);
    }
};

/// Enters the selects of Op. What a select yields are positions, hence the result "ulng".
template <class Op>
struct select_maker {
    template <class R, class... A, template <class> class... View>
    static constexpr auto entry(sig<R, A...>, mode<View...>) {
        using kernel = select_kernel<Op, View<kernel_atom<Op, A>>...>;
        return kernel_entry<decltype(&kernel::run)>{&kernel::run, L"ulng", {type_name<A>...}, {View<A>::storage...}};
    }
};

/// Registers a predicate as map and as select.
template <class Op, class Sigs, class Modes>
class register_predicate : public registration {
public:
    explicit register_predicate(const wchar_t* name = Op::name) {
        add(primitive::klassMap, name, kernel_span(kernel_table<map_maker<Op>, Sigs, Modes>));
        add(primitive::klassSelect, name, kernel_span(kernel_table<select_maker<Op>, Sigs, Modes>));
    }
};

}  // namespace qve
