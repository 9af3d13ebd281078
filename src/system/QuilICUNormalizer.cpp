#include "system/QuilICUNormalizer.h"

#include <unicode/unorm2.h>

#include <algorithm>

#include "system/QuillonException.h"
#include "system/status.h"
#include "system/unicode.h"

namespace qve::QuilICU {

std::wstring NormaliseWide(std::wstring_view text) {
    const auto isAscii = [](wchar_t c) { return c < 0x80; };
    if (std::all_of(text.begin(), text.end(), isAscii)) return std::wstring(text);
    const std::u16string units = to_utf16(text);
    const auto length = static_cast<int32_t>(units.size());
    UErrorCode error = U_ZERO_ERROR;
    const UNormalizer2* const composer = unorm2_getNFCInstance(&error);
    const UNormalizationCheckResult known =
        U_SUCCESS(error) ? unorm2_quickCheck(composer, units.data(), length, &error) : UNORM_MAYBE;
    if (U_FAILURE(error)) throw QVE_RuntimeError(status::NormaliseWide_Check, "NormaliseWide: Quick Check error");
    if (known == UNORM_YES) return std::wstring(text);
    std::u16string composed(units.size() * 3 + 1, u'\0');  // the most that composing can make of a text
    const int32_t made = unorm2_normalize(composer, units.data(), length, composed.data(),
                                          static_cast<int32_t>(composed.size()), &error);
    if (U_FAILURE(error)) throw QVE_RuntimeError(status::NormaliseWide_Normalise, "NormaliseWide: Normalise error");
    return widen(std::u16string_view(composed).substr(0, static_cast<size_t>(made)));
}

}  // namespace qve::QuilICU
