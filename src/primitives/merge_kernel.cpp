#include "primitives/merge_kernel.h"

#include <cstring>
#include <deque>
#include <string>

#include "primitives/text_sort_keys.h"
#include "primitives/token_copier.h"
#include "primitives/tokens.h"

namespace qve {
namespace {

// Reads the tokens of a run as sort keys.
template <bool Descending>
class token_ranks {
public:
    using rank = std::string;
    explicit token_ranks(const input_column& tokens) : m_tokens(tokens, false), m_keys(tokens.heap) {}
    rank operator[](unsigned row) { return m_keys.of(m_tokens[row]); }
    unsigned long long token(unsigned row) const { return m_tokens[row]; }
    static bool less(const rank& a, const rank& b) { return Descending ? b < a : a < b; }

private:
    token_view m_tokens;
    text_sort_keys m_keys;
};

template <bool Descending>
std::pair<unsigned, unsigned> merge_keys(unsigned n, output_column out, const input_column& a, const input_column& b) {
    token_ranks<Descending> left(a);
    token_ranks<Descending> right(b);
    return merge_two(n, out.values<unsigned char>(), left, a.count, right, b.count);
}

template <bool Descending>
unsigned multimerge_keys(unsigned n, output_column index, output_column keys, unsigned* positions, unsigned const* ends,
                         usrheap** heaps, void const** keys_of_runs, void const** indexes_of_runs, bool with_index) {
    std::deque<token_ranks<Descending>> runs;  // they stay where they are made
    std::deque<token_copier> copiers;
    const unsigned run_count = count_runs(keys_of_runs);
    for (unsigned r = 0; r < run_count; ++r) {
        const usrheap* heap = heaps ? heaps[r] : nullptr;
        runs.emplace_back(input_column{keys_of_runs[r], heap, keys.width, ends[r], 0});
        copiers.emplace_back(heap, keys.heap);
    }
    const token_writer writer(keys);
    char* index_out = index.values<char>();
    return merge_many<token_ranks<Descending>>(
        n, positions, ends, runs, run_count, [&](unsigned at, unsigned run, unsigned row) {
            writer.put(at, copiers[run](runs[run].token(row)));
            if (with_index) {
                const char* source = static_cast<const char*>(indexes_of_runs[run]) + row * index.width;
                std::memcpy(index_out + at * index.width, source, index.width);
            }
        });
}

}  // namespace

unsigned count_runs(void const** keys_of_runs) {
    unsigned count = 0;
    while (count < max_merge_runs && keys_of_runs[count]) ++count;
    return count;
}

std::pair<unsigned, unsigned> merge_tokens(unsigned n, output_column out, input_column a, input_column b,
                                           bool descending) {
    n = rows_that_fit(n, out.width * out.limit * 8 >= n && is_token_width(a.width) && is_token_width(b.width));
    return descending ? merge_keys<true>(n, out, a, b) : merge_keys<false>(n, out, a, b);
}

unsigned multimerge_tokens(unsigned n, output_column index, output_column keys, unsigned* positions,
                           unsigned const* ends, usrheap** heaps, void const** keys_of_runs,
                           void const** indexes_of_runs, bool with_index, bool descending) {
    const bool index_fits = !with_index || (is_token_width(index.width) && index.limit >= n);
    n = rows_that_fit(n, index_fits && is_token_width(keys.width) && keys.limit >= n);
    const auto merge = descending ? multimerge_keys<true> : multimerge_keys<false>;
    return merge(n, index, keys, positions, ends, heaps, keys_of_runs, indexes_of_runs, with_index);
}

}  // namespace qve
