#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qve::Unicode {

/// Text as heaps hold it: bytes of code units of 1 (UTF-8), 2 (UTF-16) or 4 bytes (UTF-32), anywhere in memory, not
/// aligned. Lengths and offsets are in bytes unless said otherwise. Broken sequences become U+FFFD where text is
/// converted, and count as one character for each broken part where it is measured. A trailing part of a unit is left
/// out.

/// Conversions that reuse a buffer of the caller. The view is of the buffer, or of the text itself where that is
/// in the form asked for (and aligned); it is valid until either changes.
std::string_view ToUTF8(std::string_view text, unsigned width, std::string& buffer);
std::u16string_view ToUTF16(std::string_view text, unsigned width, std::u16string& buffer);
std::u32string_view ToUTF32(std::string_view text, unsigned width, std::u32string& buffer);
std::wstring ToWideChar(std::string_view text, unsigned width);

/// Appends `text` to `out` as bytes of units of `width` bytes.
void AppendUnits(std::string& out, std::string_view utf8, unsigned width);
void AppendUnits(std::string& out, std::u16string_view utf16, unsigned width);

/// The lower case of UTF-16 in American English, in place: 1 unit for 1.
void lower_en_us(std::u16string& text);

/// Measures text in characters (code points).
struct Units {
    static uint64_t CharLength(std::string_view text, unsigned width);
    /// The offset behind the first `characters` characters; at most the length.
    static uint64_t Offset(std::string_view text, unsigned width, uint64_t characters);
    /// The offset of the last `characters` characters; at least 0.
    static uint64_t OffsetFromEnd(std::string_view text, unsigned width, uint64_t characters);
    /// The length of the longest whole number of characters that fits in `bytes`.
    static uint64_t Fit(std::string_view text, unsigned width, uint64_t bytes);
    /// The code point at the start; 0 for an empty text.
    static char32_t First(std::string_view text, unsigned width);
    /// The first offset from `from` on, between units, at which `part` lies in `text`; npos when there is none.
    static size_t Find(std::string_view text, std::string_view part, size_t from, unsigned width);
    /// True when every unit is one of ASCII from the space to the tilde.
    static bool IsPrintableASCII(std::string_view text, unsigned width);
    /// The offset behind leading, and in front of trailing white space.
    static uint64_t SkipSpace(std::string_view text, unsigned width);
    static uint64_t SkipSpaceFromEnd(std::string_view text, unsigned width);
};

}  // namespace qve::Unicode
