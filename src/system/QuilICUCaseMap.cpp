#include "system/QuilICUCaseMap.h"

#include <unicode/ustring.h>

namespace qve::QuilICU {
namespace {

using mapping = int32_t (*)(UChar*, int32_t, const UChar*, int32_t, const char*, UErrorCode*);

bool map_case(mapping map, std::u16string_view text, const char* locale, std::u16string& result) {
    result.resize(text.size());
    for (int attempt = 0; attempt < 2; ++attempt) {
        UErrorCode error = U_ZERO_ERROR;
        const int32_t needed = map(result.data(), static_cast<int32_t>(result.size()), text.data(),
                                   static_cast<int32_t>(text.size()), locale, &error);
        if (error == U_BUFFER_OVERFLOW_ERROR) {
            result.resize(static_cast<size_t>(needed));
            continue;
        }
        if (U_FAILURE(error)) break;
        result.resize(static_cast<size_t>(needed));
        return true;
    }
    result.clear();
    return false;
}

}  // namespace

bool upper2(std::u16string_view text, const char* locale, std::u16string& result) {
    return map_case(u_strToUpper, text, locale, result);
}
bool lower2(std::u16string_view text, const char* locale, std::u16string& result) {
    return map_case(u_strToLower, text, locale, result);
}

}  // namespace qve::QuilICU
