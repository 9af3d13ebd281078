#pragma once

#include <cstdint>
#include <cstring>

#include "types/output_column.h"

namespace qve {

/// Calls work(row) for the rows from 0 to `count`, or for the `count` rows of a selection.
template <class Work>
void for_selected(unsigned count, const unsigned* selection, Work work) {
    if (selection) {
        for (unsigned i = 0; i < count; ++i) work(selection[i]);
    } else {
        for (unsigned i = 0; i < count; ++i) work(i);
    }
}

/// Writes a token, all ones for a null, in the width of the column; a width other than 1, 2, 4 and 8 writes nothing.
/// Throws QVE_OverflowError (status::usrtype_put) when it does not fit below the width's all ones.
void store_token(output_column column, unsigned long row, unsigned long long token);

}  // namespace qve
