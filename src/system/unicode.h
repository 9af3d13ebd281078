#pragma once

#include <string>
#include <string_view>

namespace qve {

/// Conversions between the three Unicode forms. Broken sequences become U+FFFD, one for each maximal broken part;
/// nothing throws but bad_alloc. Wide text is UTF-32.

std::wstring widen(std::string_view utf8);
std::wstring widen(std::u16string_view utf16);
std::string narrow(std::wstring_view wide);
std::string narrow(std::u16string_view utf16);
std::u16string to_utf16(std::wstring_view wide);
std::u16string to_utf16(std::string_view utf8);

}  // namespace qve
