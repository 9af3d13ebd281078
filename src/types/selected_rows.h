#pragma once

#include <cstdint>
#include <cstring>

#include "types/input_column.h"
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

/// Reads a token. The all ones of its width, and a width other than 1, 2, 4 and 8, give all ones.
inline unsigned long long load_token(const input_column& column, unsigned long row) {
    const auto load = [&](auto token) -> unsigned long long {
        std::memcpy(&token, column.values<char>() + row * sizeof token, sizeof token);
        constexpr auto null = static_cast<decltype(token)>(~decltype(token){0});
        return token == null ? ~0ULL : token;
    };
    switch (column.width) {
        case 1:
            return load(static_cast<unsigned char>(0));
        case 2:
            return load(static_cast<unsigned short>(0));
        case 4:
            return load(0U);
        case 8:
            return load(0ULL);
        default:
            return ~0ULL;
    }
}

/// Writes a token, all ones for a null, in the width of the column; a width other than 1, 2, 4 and 8 writes nothing.
/// Throws QVE_OverflowError (status::usrtype_put) when it does not fit below the width's all ones.
void store_token(output_column column, unsigned long row, unsigned long long token);

}  // namespace qve
