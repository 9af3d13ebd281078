#pragma once

#include <optional>
#include <utility>

#include "primitives/capacity.h"
#include "primitives/kernel_table.h"
#include "primitives/sort_order.h"

namespace qve {

/// The most runs that one multimerge takes.
inline constexpr unsigned max_merge_runs = 16;

/// Reads the keys of a run as their places in the order.
template <class T, sort_sense Sense>
class value_ranks {
public:
    using rank = unsigned_of<T>;
    value_ranks() = default;
    explicit value_ranks(const void* data) : m_values(static_cast<const T*>(data)) {}
    rank operator[](unsigned row) const { return sort_order<T, Sense>::ranked(m_values[row]); }
    static bool less(rank a, rank b) { return a < b; }

private:
    const T* m_values = nullptr;
};

/// Decides up to `n` steps of the merge of two sorted sequences, one bit a step; of equal keys that of `a` goes first.
template <class Ranks>
std::pair<unsigned, unsigned> merge_two(unsigned n, unsigned char* out, Ranks& a, unsigned a_count, Ranks& b,
                                        unsigned b_count) {
    if (n == 0 || a_count == 0 || b_count == 0) return {0, 0};
    unsigned from_a = 0;
    unsigned from_b = 0;
    auto head_a = a[0];
    auto head_b = b[0];
    for (unsigned step = 0; step < n; ++step) {
        const bool take_a = !Ranks::less(head_b, head_a);
        unsigned char& byte = out[step / 8];
        byte = static_cast<unsigned char>((step % 8 ? byte : 0) | take_a << step % 8);
        if (take_a) {
            if (++from_a == a_count) break;
            head_a = a[from_a];
        } else {
            if (++from_b == b_count) break;
            head_b = b[from_b];
        }
    }
    return {from_a, from_b};
}

/// The merge by a heap of run numbers with the run of the least key on top. emit(at, run, row) writes one value. Ends
/// after `n` values, and when a run that was just read is exhausted: the caller may have more of it.
template <class Ranks, class Runs, class Emit>
unsigned merge_many(unsigned n, unsigned* positions, unsigned const* ends, Runs& runs, unsigned run_count, Emit emit) {
    unsigned char heap[max_merge_runs];
    typename Ranks::rank heads[max_merge_runs];
    unsigned size = 0;
    for (unsigned r = 0; r < run_count; ++r) {
        if (positions[r] >= ends[r]) continue;
        heads[r] = runs[r][positions[r]];
        heap[size++] = static_cast<unsigned char>(r);
    }
    const auto sift = [&](unsigned root) {
        const unsigned char run = heap[root];
        for (unsigned child; (child = 2 * root + 1) < size; root = child) {
            if (child + 1 < size && Ranks::less(heads[heap[child + 1]], heads[heap[child]])) ++child;
            if (!Ranks::less(heads[heap[child]], heads[run])) break;
            heap[root] = heap[child];
        }
        heap[root] = run;
    };
    for (unsigned root = size / 2; root-- > 0;) sift(root);
    unsigned emitted = 0;
    while (emitted < n && size > 0) {
        const unsigned run = heap[0];
        emit(emitted++, run, positions[run]++);
        if (positions[run] == ends[run]) break;
        heads[run] = runs[run][positions[run]];
        sift(0);
    }
    return emitted;
}

/// The number of runs: up to the first without keys.
unsigned count_runs(void const** keys_of_runs);

template <class T, sort_sense Sense>
std::pair<unsigned, unsigned> merge_values(unsigned n, output_column out, input_column a, input_column b) {
    n = rows_that_fit(n, out.width * out.limit * 8 >= n && a.width == sizeof(T) && b.width == sizeof(T));
    value_ranks<T, Sense> left(a.data);
    value_ranks<T, Sense> right(b.data);
    return merge_two(n, out.values<unsigned char>(), left, a.count, right, b.count);
}

template <class T, sort_sense Sense, class Index, bool WithIndex>
unsigned multimerge_values(unsigned n, output_column index, output_column keys, unsigned* positions,
                           unsigned const* ends, usrheap**, void const** keys_of_runs, void const** indexes_of_runs) {
    const bool index_fits = !WithIndex || (index.width == sizeof(Index) && index.limit >= n);
    n = rows_that_fit(n, index_fits && keys.width == sizeof(T) && keys.limit >= n);
    value_ranks<T, Sense> runs[max_merge_runs];
    const unsigned run_count = count_runs(keys_of_runs);
    for (unsigned r = 0; r < run_count; ++r) runs[r] = value_ranks<T, Sense>(keys_of_runs[r]);
    T* key_out = keys.values<T>();
    Index* index_out = index.values<Index>();
    return merge_many<value_ranks<T, Sense>>(
        n, positions, ends, runs, run_count, [&](unsigned at, unsigned run, unsigned row) {
            key_out[at] = static_cast<const T*>(keys_of_runs[run])[row];
            if (WithIndex) index_out[at] = static_cast<const Index*>(indexes_of_runs[run])[row];
        });
}

// The same over tokens of any width, in the order of their values.
std::pair<unsigned, unsigned> merge_tokens(unsigned n, output_column out, input_column a, input_column b,
                                           bool descending);
unsigned multimerge_tokens(unsigned n, output_column index, output_column keys, unsigned* positions,
                           unsigned const* ends, usrheap** heaps, void const** keys_of_runs,
                           void const** indexes_of_runs, bool with_index, bool descending);

template <sort_sense Sense>
struct merge_maker {
    static std::pair<unsigned, unsigned> text(unsigned n, output_column out, input_column a, input_column b) {
        return merge_tokens(n, out, a, b, Sense == sort_sense::descending);
    }
    template <class T>
    static constexpr auto entry(sig<bit, T>, mode<>) {
        merge_func function = &merge_values<equivalent<T>, Sense>;
        if (is_usr<T>) function = &text;
        return kernel_entry<merge_func>{function, L"bit", {type_name<T>}, {L"col"}};
    }
};

template <sort_sense Sense>
struct multimerge_maker {
    template <bool WithIndex>
    static unsigned text(unsigned n, output_column index, output_column keys, unsigned* positions, unsigned const* ends,
                         usrheap** heaps, void const** keys_of_runs, void const** indexes_of_runs) {
        return multimerge_tokens(n, index, keys, positions, ends, heaps, keys_of_runs, indexes_of_runs, WithIndex,
                                 Sense == sort_sense::descending);
    }
    template <class Index, class T, template <class> class View>
    static constexpr auto entry(sig<bit, Index, T>, mode<View>) {
        constexpr bool with_index = !is_val<View<Index>>;
        multimerge_func function = &multimerge_values<equivalent<T>, Sense, Index, with_index>;
        if (is_usr<T>) function = &text<with_index>;
        return kernel_entry<multimerge_func>{
            function, L"bit", {type_name<Index>, type_name<T>}, {View<Index>::storage, L"col"}};
    }
};

}  // namespace qve
