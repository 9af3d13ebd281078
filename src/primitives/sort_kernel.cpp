#include "primitives/sort_kernel.h"

#include <algorithm>
#include <thread>
#include <vector>

#include "primitives/capacity.h"
#include "primitives/introsort.h"
#include "primitives/text_ranks.h"
#include "primitives/tokens.h"

namespace qve {

unsigned sort_workers(const output_column& keys) {
    const bool parallel = keys.flags && *keys.flags & column_flags::parallel_sort;
    return parallel ? std::max(1U, std::thread::hardware_concurrency()) : 1;
}

void check_sort(unsigned long n, const output_column& index, uint64_t index_width, const output_column& keys,
                uint64_t key_width) {
    const bool index_fits = !index_width || (index.width == index_width && index.limit >= n);
    rows_that_fit(1, index_fits && keys.limit >= n && (!key_width || keys.width == key_width));
}

template <class Rank>
void sort_ranks(unsigned workers, unsigned long n, Rank* ranks, void* index, uint64_t index_width) {
    switch (index ? index_width : 1) {
        case 1:
            return introsort(workers, n, ranks, static_cast<unsigned char*>(index));
        case 2:
            return introsort(workers, n, ranks, static_cast<unsigned short*>(index));
        case 4:
            return introsort(workers, n, ranks, static_cast<unsigned*>(index));
        default:
            return introsort(workers, n, ranks, static_cast<unsigned long long*>(index));
    }
}

template void sort_ranks(unsigned, unsigned long, unsigned char*, void*, uint64_t);
template void sort_ranks(unsigned, unsigned long, unsigned short*, void*, uint64_t);
template void sort_ranks(unsigned, unsigned long, unsigned*, void*, uint64_t);
template void sort_ranks(unsigned, unsigned long, unsigned long long*, void*, uint64_t);

namespace {

// Moves the values of a column to where their rows went.
template <class U>
void reorder(unsigned long n, void* data, const std::vector<unsigned>& rows) {
    U* values = static_cast<U*>(data);
    const std::vector<U> before(values, values + n);
    for (unsigned long i = 0; i < n; ++i) values[i] = before[rows[i]];
}

void reorder(unsigned long n, const output_column& column, const std::vector<unsigned>& rows) {
    switch (column.width) {
        case 1:
            return reorder<unsigned char>(n, column.data, rows);
        case 2:
            return reorder<unsigned short>(n, column.data, rows);
        case 4:
            return reorder<unsigned>(n, column.data, rows);
        default:
            return reorder<unsigned long long>(n, column.data, rows);
    }
}

}  // namespace

void sort_tokens(unsigned long n, output_column index, output_column keys, bool with_index, bool descending) {
    if (n < 2) return;
    check_sort(n, index, with_index ? index.width : 0, keys, 0);
    rows_that_fit(1, is_token_width(keys.width) && (!with_index || is_token_width(index.width)));
    std::vector<unsigned> ranks = text_ranks(n, keys);
    if (descending) {
        for (unsigned& rank : ranks) rank = ~rank;
    }
    std::vector<unsigned> rows(n);
    for (unsigned long i = 0; i < n; ++i) rows[i] = static_cast<unsigned>(i);
    introsort(sort_workers(keys), n, ranks.data(), rows.data());
    reorder(n, keys, rows);
    if (with_index) reorder(n, index, rows);
}

}  // namespace qve
