#include "system/unicode.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace qve {
namespace {

constexpr UChar32 replacement = 0xFFFD;

// Calls sink(code point) for each character; broken sequences give the replacement character.
template <class Sink>
void decode(std::string_view text, Sink sink) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const size_t length = text.size();
    for (size_t i = 0; i < length;) {
        if (bytes[i] < 0x80) {
            sink(static_cast<UChar32>(bytes[i++]));
            continue;
        }
        UChar32 c;
        U8_NEXT_OR_FFFD(bytes, i, length, c);
        sink(c);
    }
}
template <class Sink>
void decode(std::u16string_view text, Sink sink) {
    for (size_t i = 0; i < text.size();) {
        UChar32 c;
        U16_NEXT_OR_FFFD(text.data(), i, text.size(), c);
        sink(c);
    }
}
template <class Sink>
void decode(std::wstring_view text, Sink sink) {
    for (const wchar_t w : text) {
        const auto c = static_cast<uint32_t>(w);
        sink(c > 0x10FFFF || U_IS_SURROGATE(c) ? replacement : static_cast<UChar32>(c));
    }
}

void append(std::string& out, UChar32 c) {
    char buffer[U8_MAX_LENGTH];
    size_t n = 0;
    U8_APPEND_UNSAFE(buffer, n, c);
    out.append(buffer, n);
}
void append(std::u16string& out, UChar32 c) {
    if (U_IS_BMP(c)) {
        out.push_back(static_cast<char16_t>(c));
    } else {
        out.push_back(U16_LEAD(c));
        out.push_back(U16_TRAIL(c));
    }
}
void append(std::wstring& out, UChar32 c) {
    out.push_back(static_cast<wchar_t>(c));
}

template <class To, class From>
To convert(From text) {
    To out;
    out.reserve(text.size());
    decode(text, [&out](UChar32 c) { append(out, c); });
    return out;
}

}  // namespace

std::wstring widen(std::string_view utf8) {
    return convert<std::wstring>(utf8);
}
std::wstring widen(std::u16string_view utf16) {
    return convert<std::wstring>(utf16);
}
std::string narrow(std::wstring_view wide) {
    return convert<std::string>(wide);
}
std::string narrow(std::u16string_view utf16) {
    return convert<std::string>(utf16);
}
std::u16string to_utf16(std::wstring_view wide) {
    return convert<std::u16string>(wide);
}
std::u16string to_utf16(std::string_view utf8) {
    return convert<std::u16string>(utf8);
}

}  // namespace qve
