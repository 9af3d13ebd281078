#include "primitives/column_kernels.h"
#include "primitives/index_fetch.h"
#include "primitives/kernel_table.h"
#include "primitives/status.h"
#include "primitives/token_copier.h"
#include "primitives/tokens.h"

namespace qve {
namespace {

/// The same for tokens of any width, which change with the heap.
template <class Index>
unsigned fetch_tokens(unsigned n, output_column out, input_column index, input_column source, unsigned const* sel) {
    n = rows_that_fit(n, out, out.width, sel);
    rows_that_fit(n, Index::fits(index) && is_token_width(source.width) && is_token_width(out.width));
    if (n == 0) return 0;
    const Index positions(index);
    const token_view tokens(source, false);
    const token_writer writer(out);
    token_copier copy(source.heap, out.heap);
    bool missing = false;
    for (unsigned k = 0; k < n; ++k) {
        const unsigned i = sel ? sel[k] : k;
        const auto at = positions[i];
        const bool present = at < source.count;
        writer.put(i, present ? copy(tokens[static_cast<unsigned>(at)]) : usrheap::null_token);
        missing |= !present;
    }
    if (out.flags && source.flags & column_flags::not_null && !missing) *out.flags |= column_flags::not_null;
    return n;
}

struct fetch_maker {
    template <class R, class A, template <class> class Index, template <class> class Source>
    static constexpr auto entry(sig<R, A>, mode<Index, Source>) {
        binary_func function;
        if constexpr (is_usr<R>) {
            function = &fetch_tokens<Index<A>>;
        } else {
            function = &fetch_values<equivalent<R>, Index<A>>;
        }
        return kernel_entry<binary_func>{
            function, type_name<R>, {type_name<A>, type_name<R>}, {Index<A>::storage, L"col"}};
    }
};

template <class R, class A>
using fetch_sig = sig<R, A>;
using fetch_modes = modes<mode<col, col>, mode<val, col>>;

const registration registered(
    primitive::klassMap, L"fetch",
    kernel_span(kernel_table<fetch_maker, for_each_pair<fetch_sig, all_atoms, atoms<ulng, oid>>, fetch_modes>));

template <class I>
binary_func fetch_of_width(unsigned long width, const char* name) {
    switch (width) {
        case 1:
            return fetch_values<uchr, col<I>>;
        case 2:
            return fetch_values<usht, col<I>>;
        case 4:
            return fetch_values<ulng, col<I>>;
        case 8:
            return fetch_values<oid, col<I>>;
        default:
            throw QVE_LogicError(status::column_kernel_width, name);
    }
}

template <class I>
binary_func fetch_of_tokens(unsigned long width, const char* name) {
    if (!is_token_width(width)) throw QVE_LogicError(status::column_kernel_width, name);
    return fetch_tokens<col<I>>;
}

}  // namespace

binary_func map_fetch_ulng_col_type_col(unsigned long width) {
    return fetch_of_width<ulng>(width, "map_fetch_ulng_col_type_col");
}
binary_func map_fetch_oid_col_type_col(unsigned long width) {
    return fetch_of_width<oid>(width, "map_fetch_oid_col_type_col");
}
binary_func map_fetch_ulng_col_usr_col(unsigned long width) {
    return fetch_of_tokens<ulng>(width, "map_fetch_ulng_col_usr_col");
}
binary_func map_fetch_oid_col_usr_col(unsigned long width) {
    return fetch_of_tokens<oid>(width, "map_fetch_oid_col_usr_col");
}

void define_fetch() {}

}  // namespace qve
