#pragma once

#include <array>
#include <span>
#include <vector>

#include "primitives/primitive_func.h"
#include "types/input_column.h"

namespace qve {

class Column;

/// Finds the rows of a flow at which keys change, where equal keys lie side by side: the first row of all, and each
/// that differs from the row before in one of the keys, also from the last row of the page before.
class KeyChanges {
public:
    /// Adds a key whose pages are as `column` describes them, of storage "col". False when there is no kernel that
    /// compares its cells.
    bool AddKey(const Column& column);
    /// Marks the rows of a page, which has one row at least: by row, 1 for such a row and 0 for all others. `keys` has
    /// the page of each key, in the order in which they were added. Valid until the next call.
    const unsigned char* Mark(unsigned count, unsigned extent, const unsigned* sel, std::span<const input_column> keys);
    /// Forgets the page before.
    void Reset() { m_carriesOver = false; }

private:
    struct Key {
        unary_func run;
        std::array<unsigned char, 16> edge;  // two cells: the last of the page before and the first of this one
    };

    bool Differs(unsigned firstRow, unsigned lastRow, std::span<const input_column> keys);

    std::vector<Key> m_keys;
    std::vector<unsigned char> m_heads;  // by row: a key changes here
    std::vector<unsigned char> m_marks;  // by row: one of the keys changes here
    bool m_carriesOver = false;          // there was a page before
};

}  // namespace qve
