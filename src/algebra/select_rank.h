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
    const auto histogram = std::make_unique<std::array<uint64_t, size_t{1} << bits>>();
    uint64_t total = 0;
    for (const std::span<const T>& piece : pieces) {
        for (const T value : piece) ++(*histogram)[rank_word(value) >> shift];
        total += piece.size();
    }
    const uint64_t high = low + 1 < total ? low + 1 : low;
    uint64_t before = 0;
    size_t first = 0;
    while (before + (*histogram)[first] <= low) before += (*histogram)[first++];
    uint64_t through = before;
    size_t last = first;
    while (through + (*histogram)[last] <= high) through += (*histogram)[last++];

    std::vector<T> candidates;
    candidates.reserve(through + (*histogram)[last] - before);
    for (const std::span<const T>& piece : pieces) {
        for (const T value : piece) {
            const uint64_t bucket = rank_word(value) >> shift;
            if (bucket >= first && bucket <= last) candidates.push_back(value);
        }
    }
    return select_pair(std::span<T>(candidates), low - before);
}

}  // namespace qve
