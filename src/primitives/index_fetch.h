#pragma once

#include "primitives/capacity.h"
#include "primitives/views.h"
#include "types/output_column.h"

namespace qve {

/// out[i] = source[index[i]], and null where the index is null or beyond the source.
template <class T, class Index>
unsigned fetch_values(unsigned n, output_column out, input_column index, input_column source, unsigned const* sel) {
    n = rows_that_fit(n, out, sizeof(T), sel);
    rows_that_fit(n, Index::fits(index) && source.width == sizeof(T));
    if (n == 0) return 0;
    const Index positions(index);
    const T* values = source.values<T>();
    T* results = out.values<T>();
    const T nothing = datatraits<T>::null;
    const typename Index::atom count = source.count;
    unsigned missing = 0;
    // The load is from a place that exists whatever the index is: so it needs no branch.
    const T* first = count ? values : &nothing;
    for (unsigned k = 0; k < n; ++k) {
        const unsigned i = sel ? sel[k] : k;
        const auto at = positions[i];
        const bool present = at < count;
        const T value = first[present ? at : 0];
        results[i] = present ? value : nothing;
        missing |= !present;
    }
    if (out.flags && source.flags & column_flags::not_null && !missing) *out.flags |= column_flags::not_null;
    return n;
}

}  // namespace qve
