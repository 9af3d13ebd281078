#pragma once

#include "primitives/kernel_table.h"
#include "primitives/sort_order.h"

namespace qve {

/// How many threads a sort may use: one, or all when the flags of the keys allow it.
unsigned sort_workers(const output_column& keys);
/// Stops the program when the columns do not hold `n` values of these widths; a width of 0 is not looked at.
void check_sort(unsigned long n, const output_column& index, uint64_t index_width, const output_column& keys,
                uint64_t key_width);

/// Sorts ranks, with an index of `index_width` bytes or none.
template <class Rank>
void sort_ranks(unsigned workers, unsigned long n, Rank* ranks, void* index, uint64_t index_width);

/// Sorts tokens by the order of their values.
void sort_tokens(unsigned long n, output_column index, output_column keys, bool with_index, bool descending);

/// The keys become their places in the order, are sorted as numbers where they lie, and become keys again.
template <class T, sort_sense Sense, class Index, bool WithIndex>
void sort_values(unsigned long n, output_column index, output_column keys) {
    if (n < 2) return;
    check_sort(n, index, WithIndex ? sizeof(Index) : 0, keys, sizeof(T));
    using order = sort_order<T, Sense>;
    using rank = typename order::rank;
    T* values = keys.values<T>();
    rank* ranks = keys.values<rank>();
    for (unsigned long i = 0; i < n; ++i) ranks[i] = order::ranked(values[i]);
    sort_ranks(sort_workers(keys), n, ranks, WithIndex ? index.data : nullptr, sizeof(Index));
    for (unsigned long i = 0; i < n; ++i) values[i] = order::value(ranks[i]);
}

template <sort_sense Sense>
struct sort_maker {
    template <bool WithIndex>
    static void text(unsigned long n, output_column index, output_column keys) {
        sort_tokens(n, index, keys, WithIndex, Sense == sort_sense::descending);
    }
    template <class Index, class T, template <class> class View>
    static constexpr auto entry(sig<bit, Index, T>, mode<View>) {
        constexpr bool with_index = !is_val<View<Index>>;
        sort_func function = &sort_values<equivalent<T>, Sense, Index, with_index>;
        if (is_usr<T>) function = &text<with_index>;
        return kernel_entry<sort_func>{
            function, L"bit", {type_name<Index>, type_name<T>}, {View<Index>::storage, L"col"}};
    }
};

template <class Index, class T>
using sort_sig = sig<bit, Index, T>;

}  // namespace qve
