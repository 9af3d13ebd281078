#pragma once

#include "primitives/capacity.h"
#include "primitives/kernel_table.h"

namespace qve {

/// Marks the rows that begin a run: out[i] is true where a[i] differs from the row before it in selection order. The
/// first row's output stays as it was. With `Again` it is ORed into what the output holds. Plain values compare bit for
/// bit.
template <class U, bool Again>
unsigned mark_runs(unsigned n, output_column out, input_column a, unsigned const* sel) {
    n = rows_that_fit(n, out, 1, sel);
    rows_that_fit(n, a.width == sizeof(U));
    const U* values = a.values<U>();
    unsigned char* marks = out.values<unsigned char>();
    if (sel) {
        for (unsigned k = 1; k < n; ++k) {
            const unsigned char differs = values[sel[k]] != values[sel[k - 1]];
            marks[sel[k]] = Again ? marks[sel[k]] | differs : differs;
        }
    } else {
#pragma GCC ivdep
        for (unsigned i = 1; i < n; ++i) {
            const unsigned char differs = values[i] != values[i - 1];
            marks[i] = Again ? marks[i] | differs : differs;
        }
    }
    return n;
}

/// The same for tokens, which are compared by value.
unsigned mark_text_runs(unsigned n, output_column out, input_column a, unsigned const* sel, bool again);

template <bool Again>
struct run_maker {
    static unsigned run_text(unsigned n, output_column out, input_column a, unsigned const* sel) {
        return mark_text_runs(n, out, a, sel, Again);
    }
    template <class R, class A>
    static constexpr auto entry(sig<R, A>, mode<col>) {
        unary_func function = &mark_runs<unsigned_of<A>, Again>;
        if (is_usr<A>) function = &run_text;
        return kernel_entry<unary_func>{function, L"bit", {type_name<A>}, {L"col"}};
    }
};

template <class T>
using run_sig = sig<bit, T>;
template <bool Again>
inline constexpr auto& run_entries =
    kernel_table<run_maker<Again>, for_each_atom<run_sig, all_atoms>, modes<mode<col>>>;

}  // namespace qve
