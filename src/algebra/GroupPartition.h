#pragma once

#include <vector>

#include "primitives/split_by_group.h"
#include "types/input_column.h"

namespace qve {

/// Sorts the rows of a page by group, where groups are few: aggregates then fold a whole vector into one accumulator,
/// which they do in registers, instead of going to memory for each row.
class GroupPartition {
public:
    /// Up to this many groups, and from so many aggregates on, the split of a page costs less than it saves.
    static constexpr unsigned maxGroups = most_split_groups;
    static constexpr unsigned fewestAggregates = 4;

    /// Splits the `count` rows that `sel` selects (null: all) by `groups`, which are unsigned 32-bit, indexed by row
    /// position, and below `groupCount`, at most maxGroups.
    void Reset(unsigned groupCount, unsigned count, input_column groups, const unsigned* sel);

    /// How many rows the group has in the page.
    unsigned GetCount(unsigned group) const { return m_counts[group]; }
    /// Their ascending positions. Valid until the next Reset.
    const unsigned* GetSelection(unsigned group) const { return m_rows.data() + m_starts[group]; }
    /// The group number, as a vector in which all rows are of this group.
    input_column GetNumbers(unsigned group) const;

private:
    unsigned m_starts[maxGroups] = {};
    unsigned m_counts[maxGroups] = {};
    std::vector<unsigned> m_rows;
};

}  // namespace qve
