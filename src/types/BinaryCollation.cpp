#include "types/BinaryCollation.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "system/QuilICUCaseMap.h"
#include "system/QuillonException.h"
#include "system/UnicodeUnits.h"
#include "types/hashfunc.h"
#include "types/status.h"
#include "types/text_argument.h"
#include "types/usrtype.h"

namespace qve {
namespace {

using std::string_view;
constexpr size_t nowhere = string_view::npos;

unsigned width_of(const usratom& text) {
    return static_cast<unsigned>(text.type()->scale());
}

// The bytes of `text` in units of `width` bytes; in its own buffer when they have to be converted.
class units {
public:
    units(const usratom& text, unsigned width) : m_bytes(text.bytes()) {
        if (width_of(text) == width) return;
        std::u16string utf16;
        Unicode::AppendUnits(m_buffer, Unicode::ToUTF16(text.bytes(), width_of(text), utf16), width);
        m_bytes = m_buffer;
    }
    units(const units&) = delete;
    operator string_view() const { return m_bytes; }

private:
    std::string m_buffer;
    string_view m_bytes;
};

template <class Unit>
int compare_units(string_view a, string_view b) {
    const size_t common = std::min(a.size(), b.size()) / sizeof(Unit);
    for (size_t i = 0; i < common; ++i) {
        Unit x;
        Unit y;
        std::memcpy(&x, a.data() + i * sizeof(Unit), sizeof(Unit));
        std::memcpy(&y, b.data() + i * sizeof(Unit), sizeof(Unit));
        if (x != y) return x < y ? -1 : 1;
    }
    return (a.size() > b.size()) - (a.size() < b.size());
}

// Byte offsets of `part` in `text`, on unit boundaries.
size_t find_before(string_view text, string_view part, size_t from, unsigned width) {
    size_t at = text.rfind(part, from);
    while (at != nowhere && at % width) at = at ? text.rfind(part, at - 1) : nowhere;
    return at;
}

// The n-th occurrence that does not overlap an earlier one, from the end for a negative n.
size_t nth(string_view text, string_view part, int n, unsigned width) {
    if (n == 0 || part.empty()) return nowhere;
    size_t at = nowhere;
    if (n > 0) {
        size_t from = 0;
        for (int i = 0; i < n; ++i, from = at + part.size()) {
            at = Unicode::Units::Find(text, part, from, width);
            if (at == nowhere) return nowhere;
        }
    } else {
        size_t from = text.size();
        for (int i = 0; i > n; --i) {
            if (from < part.size()) return nowhere;
            at = find_before(text, part, from - part.size(), width);
            if (at == nowhere) return nowhere;
            from = at;
        }
    }
    return at;
}

int place_of(string_view text, size_t at, unsigned width) {
    return at == nowhere ? 0 : static_cast<int>(Unicode::Units::CharLength(text.substr(0, at), width)) + 1;
}

}  // namespace

void BinaryCollation::sortkey(std::vector<unsigned char>& key, const usratom& text) const {
    require_text(text, "ICUCollation::Collator::sortkey: Null argument");
    const string_view bytes = text.bytes();
    const unsigned width = width_of(text);
    key.assign(bytes.begin(), bytes.end());
    if (width == 1) return;
    // The high byte of each unit first.
    for (size_t i = 0; i + width <= key.size(); i += width) std::reverse(&key[i], &key[i] + width);
}

unsigned BinaryCollation::hash(const usratom& text) const {
    return hashfunc(text.data(), text.length());
}

int BinaryCollation::compare(const usratom& left, const usratom& right) const {
    require_text(left, "collation::compare: Null argument");
    require_text(right, "collation::compare: Null argument");
    const unsigned width = width_of(left);
    if (width == width_of(right)) {
        if (width == 2) return compare_units<char16_t>(left.bytes(), right.bytes());
        if (width == 4) return compare_units<char32_t>(left.bytes(), right.bytes());
        const int order = left.bytes().compare(right.bytes());
        return (order > 0) - (order < 0);
    }
    return compare_units<char16_t>(units(left, 2), units(right, 2));
}

bool BinaryCollation::startswith(const usratom& text, const usratom& part) const {
    require_text(text, "collation::startswith: Null argument");
    require_text(part, "collation::startswith: Null argument");
    return text.bytes().starts_with(units(part, width_of(text)));
}

bool BinaryCollation::endswith(const usratom& text, const usratom& part) const {
    require_text(text, "collation::endswith: Null argument");
    require_text(part, "collation::endswith: Null argument");
    return text.bytes().ends_with(units(part, width_of(text)));
}

bool BinaryCollation::contains(const usratom& text, const usratom& part) const {
    require_text(text, "collation::contains: Null argument");
    require_text(part, "collation::contains: Null argument");
    return Unicode::Units::Find(text.bytes(), units(part, width_of(text)), 0, width_of(text)) != nowhere;
}

int BinaryCollation::find(const usratom& text, const usratom& part, int start) const {
    require_text(text, "collation::find: Null argument");
    require_text(part, "collation::find: Null argument");
    if (part.length() == 0) return 1;
    const unsigned width = width_of(text);
    const size_t from = Unicode::Units::Offset(text.bytes(), width, start > 1 ? static_cast<uint64_t>(start) - 1 : 0);
    return place_of(text.bytes(), Unicode::Units::Find(text.bytes(), units(part, width), from, width), width);
}

int BinaryCollation::findNth(const usratom& text, const usratom& part, int n) const {
    require_text(text, "ICUCollation::findNth: Null argument");
    require_text(part, "ICUCollation::findNth: Null argument");
    const unsigned width = width_of(text);
    return place_of(text.bytes(), nth(text.bytes(), units(part, width), n, width), width);
}

void BinaryCollation::split(usratom& result, const usratom& text, const usratom& delimiter, int n) const {
    if (!text.data() || !delimiter.data()) {
        throw QVE_InvalidArgument(status::BinaryCollation_split, "BinaryCollation::Collator::split: Null argument");
    }
    const unsigned width = width_of(text);
    const string_view whole = text.bytes();
    const units separator_units(delimiter, width);
    const string_view separator = separator_units;
    string_view piece;
    if (separator.empty()) {
        if (n == 1 || n == -1) piece = whole;
    } else if (n > 0) {
        // Between the delimiter before and the one behind.
        const size_t before = n == 1 ? 0 : nth(whole, separator, n - 1, width);
        if (before != nowhere) {
            const size_t from = n == 1 ? 0 : before + separator.size();
            piece = whole.substr(from, Unicode::Units::Find(whole, separator, from, width) - from);
        }
    } else if (n < 0) {
        const size_t behind = n == -1 ? whole.size() : nth(whole, separator, n + 1, width);
        if (behind != nowhere) {
            const size_t before =
                behind < separator.size() ? nowhere : find_before(whole, separator, behind - separator.size(), width);
            const size_t from = before == nowhere ? 0 : before + separator.size();
            piece = whole.substr(from, behind - from);
        }
    }
    const std::string copy(piece);
    assign_text(result, text.type(), copy, width);
}

void BinaryCollation::replace(usratom& result, const usratom& text, const usratom& from, const usratom& to) const {
    for (const usratom* argument : {&text, &from, &to}) require_text(*argument, "ICUCollation::replace: Null argument");
    const unsigned width = width_of(text);
    const string_view whole = text.bytes();
    const units from_units(from, width);
    const units to_units(to, width);
    const string_view old_part = from_units;
    const string_view new_part = to_units;
    std::string replaced;
    size_t done = 0;
    while (!old_part.empty()) {
        const size_t at = Unicode::Units::Find(whole, old_part, done, width);
        if (at == nowhere) break;
        replaced.append(whole, done, at - done).append(new_part);
        done = at + old_part.size();
        if (replaced.size() > longest_text) return result.assign_null(text.type());
    }
    replaced.append(whole, done);
    assign_text(result, text.type(), replaced, width);
}

void BinaryCollation::upper(const usratom& text, usratom& result) const {
    require_text(text, "collation::upper: Null argument");
    if (upper_ascii(text, result)) return;
    std::u16string buffer;
    std::u16string mapped;
    QuilICU::upper2(Unicode::ToUTF16(text.bytes(), width_of(text), buffer), "", mapped);
    assign_text(result, text.type(), mapped);
}

void BinaryCollation::lower(const usratom& text, usratom& result) const {
    require_text(text, "collation::lower: Null argument");
    if (lower_ascii(text, result)) return;
    std::u16string buffer;
    std::u16string mapped;
    QuilICU::lower2(Unicode::ToUTF16(text.bytes(), width_of(text), buffer), "", mapped);
    assign_text(result, text.type(), mapped);
}

}  // namespace qve
