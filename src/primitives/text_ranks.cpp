#include "primitives/text_ranks.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>

#include "primitives/text_sort_keys.h"
#include "primitives/tokens.h"

namespace qve {

std::vector<unsigned> text_ranks(size_t n, const output_column& tokens) {
    const token_view view({tokens.data, tokens.heap, tokens.width, tokens.limit, 0}, false);
    std::unordered_map<unsigned long long, unsigned> numbers;  // of distinct tokens, in the order in which they come
    std::vector<unsigned> ranks(n);
    std::vector<std::string> keys;
    text_sort_keys key_of(tokens.heap);
    for (size_t i = 0; i < n; ++i) {
        const unsigned long long token = view[static_cast<unsigned>(i)];
        const auto [found, added] = numbers.try_emplace(token, static_cast<unsigned>(keys.size()));
        if (added) keys.push_back(key_of.of(token));
        ranks[i] = found->second;
    }
    std::vector<unsigned> order(keys.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(), [&](unsigned a, unsigned b) { return keys[a] < keys[b]; });
    std::vector<unsigned> place(keys.size());
    for (size_t i = 0; i < order.size(); ++i) {
        const bool same = i > 0 && keys[order[i]] == keys[order[i - 1]];
        place[order[i]] = same ? place[order[i - 1]] : static_cast<unsigned>(i);
    }
    for (unsigned& rank : ranks) rank = place[rank];
    return ranks;
}

}  // namespace qve
