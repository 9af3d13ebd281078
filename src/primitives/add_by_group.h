#pragma once

#include <cstdint>

namespace qve {

/// Rows that add_by_group takes side by side: of each group it keeps so many sums.
inline constexpr unsigned sums_of_group = 8;
/// The groups that it takes at most.
inline constexpr unsigned most_added_groups = 8;

/// Adds values[i] to parts[i % sums_of_group][groups[i]] for the first rows of `n`, where the processor has registers
/// for it, and returns how many: a multiple of sums_of_group, or 0. Groups are below `count`. Row s of `parts` begins
/// at parts + s * stride.
unsigned add_by_group(unsigned n, double* parts, unsigned stride, const double* values, const unsigned* groups,
                      unsigned count);
/// The same where values may be null, which changes nothing; bit g of `seen` is set when a value of group g is not.
unsigned add_nullable_by_group(unsigned n, double* parts, unsigned stride, const double* values, const unsigned* groups,
                               unsigned count, uint64_t& seen);

}  // namespace qve
