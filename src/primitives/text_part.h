#pragma once

#include "primitives/text_function.h"
#include "system/UnicodeUnits.h"
#include "types/usrtype.h"

namespace qve {

/// Makes a part of the first text the result.
inline long long keep_part(text_call& call, uint64_t begin, uint64_t length) {
    const usratom& text = *call.text[0];
    call.result.assign(text.type(), text.data() + begin, length, true);
    return 0;
}

/// A count of characters: null when it is negative or all ones of 32 bits.
inline bool is_count(long long number) {
    return number >= 0 && number < 0xFFFFFFFF;
}

/// A number of places or pieces, where more than an int holds is as good as the most it holds.
inline int within_int(long long number) {
    constexpr long long most = std::numeric_limits<int>::max();
    return static_cast<int>(number > most ? most : number < -most ? -most : number);
}

inline unsigned unit_width(const usratom& text) {
    return static_cast<unsigned>(text.type()->scale());
}

using text_and_number = for_each_pair<text_of_two, usr_atoms, number_atoms>;

}  // namespace qve
