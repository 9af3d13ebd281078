#include "types/text_argument.h"

#include <algorithm>
#include <vector>

#include "system/QuillonException.h"
#include "system/UnicodeUnits.h"
#include "types/status.h"
#include "types/usrtype.h"

namespace qve {
namespace {

template <class Map>
bool map_ascii(const usratom& text, usratom& result, Map map) {
    const usrtype* const type = result.type() ? result.type() : text.type();
    if (text.type()->scale() != 1 || type->scale() != 1) return false;
    const std::string_view bytes = text.bytes();
    unsigned char all = 0;
    for (const char c : bytes) all |= static_cast<unsigned char>(c);
    if (all >= 0x80) return false;
    std::vector<char> mapped(bytes.size());
    std::transform(bytes.begin(), bytes.end(), mapped.begin(), map);
    result.swap(type, mapped);
    return true;
}

}  // namespace

void require_text(const usratom& text, const char* message) {
    if (!text.data()) throw QVE_InvalidArgument(status::collation_null_argument, message);
}

void assign_text(usratom& result, const usrtype* fallback, std::string_view text, unsigned width) {
    const usrtype* const type = result.type() ? result.type() : fallback;
    const auto wanted = static_cast<unsigned>(type->scale());
    if (wanted == width) return result.assign(type, text.data() ? text.data() : "", text.size());
    std::u16string buffer;
    assign_text(result, fallback, Unicode::ToUTF16(text, width, buffer));
}

void assign_text(usratom& result, const usrtype* fallback, std::u16string_view text) {
    const usrtype* const type = result.type() ? result.type() : fallback;
    std::string bytes;
    Unicode::AppendUnits(bytes, text, static_cast<unsigned>(type->scale()));
    result.assign(type, bytes.data(), bytes.size());
}

bool upper_ascii(const usratom& text, usratom& result) {
    return map_ascii(text, result, [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
}
bool lower_ascii(const usratom& text, usratom& result) {
    return map_ascii(text, result, [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
}

}  // namespace qve
