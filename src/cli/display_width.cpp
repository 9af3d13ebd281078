#include "cli/display_width.h"

#include <fmt/format.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace qve::cli {
namespace {

std::size_t WidthOf(UChar32 c) {
    if (c >= 0x20 && c < 0x7F) return 1;
    if (c < 0) return 1;  // broken UTF-8 shows as one replacement character
    const auto category = u_charType(c);
    if (category == U_NON_SPACING_MARK || category == U_ENCLOSING_MARK || category == U_FORMAT_CHAR) return 0;
    const auto width = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

bool IsControl(UChar32 c) {
    return c >= 0 && (c < 0x20 || (c >= 0x7F && c < 0xA0));
}

std::string Escape(UChar32 c) {
    switch (c) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return fmt::format("\\x{:02x}", c);
    }
}

/// Calls `visit(character, bytes)` for each character, -1 for what is none.
template <class Visit>
void ForEachCharacter(std::string_view utf8, Visit visit) {
    const auto size = static_cast<std::ptrdiff_t>(utf8.size());
    for (std::ptrdiff_t at = 0; at < size;) {
        const std::ptrdiff_t start = at;
        UChar32 c;
        U8_NEXT(utf8.data(), at, size, c);
        visit(c, utf8.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(at - start)));
    }
}

}  // namespace

std::size_t DisplayWidth(std::string_view utf8) {
    std::size_t width = 0;
    ForEachCharacter(utf8, [&](UChar32 c, std::string_view) { width += WidthOf(c); });
    return width;
}

std::string Printable(std::string_view utf8) {
    std::string text;
    text.reserve(utf8.size());
    ForEachCharacter(utf8, [&](UChar32 c, std::string_view bytes) {
        if (IsControl(c)) {
            text += Escape(c);
        } else if (c < 0) {
            text += "\xEF\xBF\xBD";
        } else {
            text += bytes;
        }
    });
    return text;
}

}  // namespace qve::cli
