#pragma once

namespace qve {

/// Up to this many groups split_by_group is there for.
inline constexpr unsigned most_split_groups = 8;
/// split_by_group writes up to so many numbers behind the last row of a group.
inline constexpr unsigned split_slack = 16;

/// Lists the rows of each group: those of group g go to `rows` from g * `stride` on, in the order in which they come,
/// and counts[g] is their number. `groups`, below `groupCount`, are indexed by row; the `count` rows are those that
/// `sel` lists, or all when it is null. `stride` is at least `count` + split_slack. False, and nothing done, where the
/// processor has no units of 512 bits.
bool split_by_group(unsigned groupCount, unsigned count, const unsigned* groups, const unsigned* sel, unsigned stride,
                    unsigned* rows, unsigned* counts);

}  // namespace qve
