#pragma once

#include <string>
#include <string_view>

namespace qve::QuilICU {

/// Case mapping by the rules of a locale, "" for those of no language. The result goes to `result`, whose memory is
/// reused. False when ICU fails; the result is empty then.
bool upper2(std::u16string_view text, const char* locale, std::u16string& result);
bool lower2(std::u16string_view text, const char* locale, std::u16string& result);

}  // namespace qve::QuilICU
