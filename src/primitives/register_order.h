#pragma once

#include "primitives/merge_kernel.h"
#include "primitives/sort_kernel.h"

namespace qve {

template <class T>
using merge_sig = sig<bit, T>;

/// Registers the sorts, merges and multimerges of one sense: every type of key, for sorts and multimerges with every
/// form of index; "val" stands for no index.
template <sort_sense Sense>
class register_order : public registration {
public:
    explicit register_order(const wchar_t* name) {
        using indexed = for_each_pair<sort_sig, index_atoms, all_atoms>;
        using alone = for_each_pair<sort_sig, atoms<uchr>, all_atoms>;
        using with_index = modes<mode<col>>;
        using without = modes<mode<val>>;
        add(primitive::klassSort, name, kernel_span(kernel_table<sort_maker<Sense>, indexed, with_index>));
        add(primitive::klassSort, name, kernel_span(kernel_table<sort_maker<Sense>, alone, without>));
        add(primitive::klassMultimerge, name, kernel_span(kernel_table<multimerge_maker<Sense>, indexed, with_index>));
        add(primitive::klassMultimerge, name, kernel_span(kernel_table<multimerge_maker<Sense>, alone, without>));
        add(primitive::klassMerge, name,
            kernel_span(kernel_table<merge_maker<Sense>, for_each_atom<merge_sig, all_atoms>, modes0>));
    }
};

}  // namespace qve
