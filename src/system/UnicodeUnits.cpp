#include "system/UnicodeUnits.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstring>

namespace qve::Unicode {
namespace {

constexpr char32_t replacement = 0xFFFD;

// Walks text forwards and backwards, one code point at a time. Broken parts read as the replacement character.
class utf8_walker {
public:
    explicit utf8_walker(std::string_view text)
        : m_text(reinterpret_cast<const uint8_t*>(text.data())), m_end(static_cast<int64_t>(text.size())) {}
    uint64_t size() const { return static_cast<uint64_t>(m_end); }
    char32_t next(uint64_t& at) const {
        const uint8_t lead = m_text[at];
        if (lead < 0x80) {
            ++at;
            return lead;
        }
        auto i = static_cast<int64_t>(at);
        UChar32 c;
        U8_NEXT_OR_FFFD(m_text, i, m_end, c);
        at = static_cast<uint64_t>(i);
        return static_cast<char32_t>(c);
    }
    char32_t previous(uint64_t& at) const {
        // The macro's slow path takes 32-bit positions, so it sees a few bytes around the character only.
        const uint64_t from = at > 8 ? at - 8 : 0;
        const uint8_t* window = m_text + from;
        auto i = static_cast<int32_t>(at - from);
        UChar32 c;
        U8_PREV_OR_FFFD(window, 0, i, c);
        at = from + static_cast<uint64_t>(i);
        return static_cast<char32_t>(c);
    }

private:
    const uint8_t* m_text;
    int64_t m_end;
};

template <class Unit>
class unit_walker {
public:
    explicit unit_walker(std::string_view text) : m_text(text.data()), m_size(text.size() & ~(sizeof(Unit) - 1)) {}
    uint64_t size() const { return m_size; }
    char32_t next(uint64_t& at) const {
        const char32_t c = load(at);
        at += sizeof(Unit);
        if constexpr (sizeof(Unit) == 2) {
            if (U16_IS_SURROGATE(c)) {
                if (U16_IS_SURROGATE_LEAD(c) && at < m_size && U16_IS_TRAIL(load(at))) {
                    const char32_t trail = load(at);
                    at += sizeof(Unit);
                    return static_cast<char32_t>(U16_GET_SUPPLEMENTARY(c, trail));
                }
                return replacement;
            }
        }
        return valid(c);
    }
    char32_t previous(uint64_t& at) const {
        at -= sizeof(Unit);
        const char32_t c = load(at);
        if constexpr (sizeof(Unit) == 2) {
            if (U16_IS_SURROGATE(c)) {
                if (U16_IS_SURROGATE_TRAIL(c) && at > 0 && U16_IS_LEAD(load(at - sizeof(Unit)))) {
                    at -= sizeof(Unit);
                    return static_cast<char32_t>(U16_GET_SUPPLEMENTARY(load(at), c));
                }
                return replacement;
            }
        }
        return valid(c);
    }

private:
    static char32_t valid(char32_t c) { return c > 0x10FFFF || U_IS_SURROGATE(c) ? replacement : c; }
    char32_t load(uint64_t at) const {
        Unit unit;
        std::memcpy(&unit, m_text + at, sizeof unit);
        return unit;
    }

    const char* m_text;
    uint64_t m_size;
};

// Calls work(walker) with the walker for the width; an unknown width walks as bytes.
template <class Work>
auto with_walker(std::string_view text, unsigned width, Work work) {
    switch (width) {
        case 2:
            return work(unit_walker<char16_t>(text));
        case 4:
            return work(unit_walker<char32_t>(text));
        default:
            return work(utf8_walker(text));
    }
}

void append(std::string& out, char32_t c) {
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
        return;
    }
    char buffer[U8_MAX_LENGTH];
    size_t n = 0;
    U8_APPEND_UNSAFE(buffer, n, c);
    out.append(buffer, n);
}
void append(std::u16string& out, char32_t c) {
    if (c <= 0xFFFF) {
        out.push_back(static_cast<char16_t>(c));
    } else {
        out.push_back(U16_LEAD(c));
        out.push_back(U16_TRAIL(c));
    }
}
void append(std::u32string& out, char32_t c) {
    out.push_back(c);
}
void append(std::wstring& out, char32_t c) {
    out.push_back(static_cast<wchar_t>(c));
}

template <class To>
void convert(To& out, std::string_view text, unsigned width) {
    out.reserve(out.size() + text.size() / width);
    with_walker(text, width, [&out](auto walker) {
        for (uint64_t at = 0; at < walker.size();) append(out, walker.next(at));
    });
}

// The length of the ASCII text at the start.
size_t ascii_prefix(std::string_view text) {
    size_t i = 0;
    for (; i + 8 <= text.size(); i += 8) {
        uint64_t eight;
        std::memcpy(&eight, text.data() + i, sizeof eight);
        if (eight & 0x8080808080808080ULL) break;
    }
    while (i < text.size() && static_cast<unsigned char>(text[i]) < 0x80) ++i;
    return i;
}

template <class Unit>
bool aligned(std::string_view text) {
    return reinterpret_cast<uintptr_t>(text.data()) % alignof(Unit) == 0;
}
template <class Unit>
std::basic_string_view<Unit> same_width(std::string_view text, std::basic_string<Unit>& buffer) {
    const size_t count = text.size() / sizeof(Unit);
    if (aligned<Unit>(text)) return {reinterpret_cast<const Unit*>(text.data()), count};
    buffer.resize(count);
    std::memcpy(buffer.data(), text.data(), count * sizeof(Unit));
    return buffer;
}

template <class Unit>
void append_bytes(std::string& out, const std::basic_string<Unit>& units) {
    out.append(reinterpret_cast<const char*>(units.data()), units.size() * sizeof(Unit));
}

}  // namespace

std::string_view ToUTF8(std::string_view text, unsigned width, std::string& buffer) {
    if (width == 1) return text;
    buffer.clear();
    convert(buffer, text, width);
    return buffer;
}

std::u16string_view ToUTF16(std::string_view text, unsigned width, std::u16string& buffer) {
    if (width == 2) return same_width<char16_t>(text, buffer);
    if (width == 1) {
        const size_t ascii = ascii_prefix(text);
        buffer.resize(ascii);
        std::transform(text.begin(), text.begin() + static_cast<ptrdiff_t>(ascii), buffer.begin(),
                       [](char c) { return static_cast<char16_t>(c); });
        text.remove_prefix(ascii);
        if (text.empty()) return buffer;
    } else {
        buffer.clear();
    }
    convert(buffer, text, width);
    return buffer;
}

std::u32string_view ToUTF32(std::string_view text, unsigned width, std::u32string& buffer) {
    if (width == 4) return same_width<char32_t>(text, buffer);
    buffer.clear();
    convert(buffer, text, width);
    return buffer;
}

std::wstring ToWideChar(std::string_view text, unsigned width) {
    std::wstring out;
    convert(out, text, width);
    return out;
}

void AppendUnits(std::string& out, std::string_view utf8, unsigned width) {
    if (width == 1) {
        out.append(utf8);
    } else if (width == 2) {
        std::u16string units;
        ToUTF16(utf8, 1, units);
        append_bytes(out, units);
    } else {
        std::u32string units;
        ToUTF32(utf8, 1, units);
        append_bytes(out, units);
    }
}

void AppendUnits(std::string& out, std::u16string_view utf16, unsigned width) {
    const std::string_view bytes(reinterpret_cast<const char*>(utf16.data()), utf16.size() * sizeof(char16_t));
    if (width == 2) {
        out.append(bytes);
    } else if (width == 1) {
        convert(out, bytes, 2);
    } else {
        std::u32string units;
        convert(units, bytes, 2);
        append_bytes(out, units);
    }
}

void lower_en_us(std::u16string& text) {
    for (char16_t& c : text) {
        if (c < 0x80) {
            if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + 32);
        } else if (!U16_IS_SURROGATE(c)) {
            const UChar32 lower = u_tolower(c);
            if (lower <= 0xFFFF) c = static_cast<char16_t>(lower);
        }
    }
}

uint64_t Units::CharLength(std::string_view text, unsigned width) {
    if (width == 4) return text.size() / 4;
    uint64_t ascii = 0;
    if (width == 1) {
        ascii = ascii_prefix(text);
        text.remove_prefix(ascii);
    }
    return ascii + with_walker(text, width, [](auto walker) {
               uint64_t count = 0;
               for (uint64_t at = 0; at < walker.size(); ++count) walker.next(at);
               return count;
           });
}

uint64_t Units::Offset(std::string_view text, unsigned width, uint64_t characters) {
    return with_walker(text, width, [characters](auto walker) {
        uint64_t at = 0;
        for (uint64_t i = 0; i < characters && at < walker.size(); ++i) walker.next(at);
        return at;
    });
}

uint64_t Units::OffsetFromEnd(std::string_view text, unsigned width, uint64_t characters) {
    return with_walker(text, width, [characters](auto walker) {
        uint64_t at = walker.size();
        for (uint64_t i = 0; i < characters && at > 0; ++i) walker.previous(at);
        return at;
    });
}

uint64_t Units::Fit(std::string_view text, unsigned width, uint64_t bytes) {
    if (text.size() <= bytes) return text.size();
    bytes -= bytes % width;
    return with_walker(text, width, [bytes](auto walker) {
        uint64_t fits = bytes;
        // Back to the start of the character that the cut would split; it began at most three units before.
        uint64_t at = bytes > 8 ? bytes - 8 : 0;
        if (at > 0) {
            // From a place that may be inside a character: walk back to a boundary first.
            uint64_t boundary = at;
            walker.previous(boundary);
            at = boundary;
        }
        while (at < bytes) {
            fits = at;
            walker.next(at);
        }
        return at == bytes ? bytes : fits;
    });
}

char32_t Units::First(std::string_view text, unsigned width) {
    return with_walker(text, width, [](auto walker) {
        uint64_t at = 0;
        return walker.size() == 0 ? U'\0' : walker.next(at);
    });
}

size_t Units::Find(std::string_view text, std::string_view part, size_t from, unsigned width) {
    size_t at = text.find(part, from);
    while (at != std::string_view::npos && at % width) at = text.find(part, at + 1);
    return at;
}

bool Units::IsPrintableASCII(std::string_view text, unsigned width) {
    if (text.size() % width) return false;
    if (width != 1) {
        for (size_t at = 0; at < text.size(); at += width) {
            char32_t unit = 0;
            std::memcpy(&unit, text.data() + at, width);
            if (unit < ' ' || unit > '~') return false;
        }
        return true;
    }
    // Eight bytes at a time. Among printable ones nothing is borrowed or carried, so the first byte that is not one
    // shows itself in its highest bit.
    constexpr uint64_t ones = 0x0101010101010101;
    const auto printable = [](uint64_t bytes) {
        return (((bytes - ones * ' ') | bytes | (bytes + ones * (0x7F - '~'))) & (ones * 0x80)) == 0;
    };
    size_t at = 0;
    uint64_t word = 0;
    for (; at + sizeof word <= text.size(); at += sizeof word) {
        std::memcpy(&word, text.data() + at, sizeof word);
        if (!printable(word)) return false;
    }
    word = ones * ' ';
    std::memcpy(&word, text.data() + at, text.size() - at);
    return printable(word);
}

uint64_t Units::SkipSpace(std::string_view text, unsigned width) {
    return with_walker(text, width, [](auto walker) {
        uint64_t at = 0;
        while (at < walker.size()) {
            uint64_t next = at;
            if (!u_isUWhiteSpace(static_cast<UChar32>(walker.next(next)))) break;
            at = next;
        }
        return at;
    });
}

uint64_t Units::SkipSpaceFromEnd(std::string_view text, unsigned width) {
    return with_walker(text, width, [](auto walker) {
        uint64_t at = walker.size();
        while (at > 0) {
            uint64_t previous = at;
            if (!u_isUWhiteSpace(static_cast<UChar32>(walker.previous(previous)))) break;
            at = previous;
        }
        return at;
    });
}

}  // namespace qve::Unicode
