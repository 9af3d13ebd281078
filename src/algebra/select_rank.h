#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

namespace qve {

/// The position of a value among all of its type as an unsigned number, so that values compare as these do.
template <class T>
constexpr uint64_t rank_word(T value) {
    if constexpr (std::is_floating_point_v<T>) {
        const auto bits = std::bit_cast<uint64_t>(value);
        constexpr uint64_t sign = uint64_t{1} << 63;
        return bits & sign ? ~bits : bits | sign;
    } else if constexpr (std::is_signed_v<T>) {
        return static_cast<uint64_t>(value) ^ (uint64_t{1} << 63);
    } else {
        return value;
    }
}

/// The values that stand at positions `low` and `low` + 1 of `values` when they are sorted; at the last position the
/// value counts twice. Leaves the values in another order.
template <class T>
std::pair<T, T> select_pair(std::span<T> values, uint64_t low) {
    const auto at = values.begin() + static_cast<std::ptrdiff_t>(low);
    std::nth_element(values.begin(), at, values.end());
    return {*at, at + 1 == values.end() ? *at : *std::min_element(at + 1, values.end())};
}

/// The same of values that lie in several pieces, which stay as they are. Counts them by their leading bits first, so
/// that only the few that share them with the wanted ones are moved.
template <class T>
std::pair<T, T> select_pair(const std::vector<std::span<const T>>& pieces, uint64_t low) {
    constexpr unsigned bits = 16;
    constexpr unsigned shift = 64 - bits;
    using Counts = std::array<uint64_t, size_t{1} << bits>;
    // Neighbours that fall into one bucket would wait for each other; so they are counted apart.
    const auto counts = std::make_unique<std::array<Counts, 2>>();
    uint64_t total = 0;
    for (const std::span<const T>& piece : pieces) {
        size_t i = 0;
        for (; i + 1 < piece.size(); i += 2) {
            ++(*counts)[0][rank_word(piece[i]) >> shift];
            ++(*counts)[1][rank_word(piece[i + 1]) >> shift];
        }
        if (i < piece.size()) ++(*counts)[0][rank_word(piece[i]) >> shift];
        total += piece.size();
    }
    Counts& histogram = (*counts)[0];
    for (size_t bucket = 0; bucket < histogram.size(); ++bucket) histogram[bucket] += (*counts)[1][bucket];

    const uint64_t high = low + 1 < total ? low + 1 : low;
    uint64_t before = 0;
    size_t first = 0;
    while (before + histogram[first] <= low) before += histogram[first++];
    uint64_t through = before;
    size_t last = first;
    while (through + histogram[last] <= high) through += histogram[last++];

    // One more than the candidates: each value is written before it is known to be one.
    const uint64_t wanted = through + histogram[last] - before;
    const auto candidates = std::make_unique_for_overwrite<T[]>(wanted + 1);
    uint64_t found = 0;
    for (const std::span<const T>& piece : pieces) {
        for (const T value : piece) {
            candidates[found] = value;
            found += (rank_word(value) >> shift) - first <= last - first;
        }
    }
    return select_pair(std::span<T>(candidates.get(), wanted), low - before);
}

}  // namespace qve
