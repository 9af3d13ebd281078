#include "types/ICUCollator.h"

#include <algorithm>

#include "system/QuilICUCaseMap.h"
#include "system/QuillonException.h"
#include "system/UnicodeUnits.h"
#include "types/hashfunc.h"
#include "types/status.h"
#include "types/text_argument.h"
#include "types/usrtype.h"

namespace qve {
namespace {

using std::u16string_view;

std::string_view bytes_of(u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

// From characters to UTF-16 units and back.
size_t unit_offset(u16string_view text, size_t characters) {
    return Unicode::Units::Offset(bytes_of(text), 2, characters) / sizeof(char16_t);
}
int place_of(u16string_view text, const std::optional<QuilICU::Match>& match) {
    if (!match) return 0;
    return static_cast<int>(Unicode::Units::CharLength(bytes_of(text.substr(0, match->begin)), 2)) + 1;
}

}  // namespace

ICUCollation::Collator::Collator(std::string locale, Attributes attributes)
    : m_locale(std::move(locale)), m_attributes(attributes), m_key(512) {
    if (m_locale.empty()) throw QVE_RangeError(status::collation_locale, "error getting locale");
    const std::string_view language = std::string_view(m_locale).substr(0, 2);
    m_asciiCase = language != "tr" && language != "az" && language != "lt";
    m_collator = QuilICU::Collator::Open(m_locale.c_str());
    if (!m_collator) throw QVE_RangeError(status::ICUCollation_open, "error constructing collation");
    bool set = true;
    switch (attributes) {
        case defaultStrength:
            break;
        case caseInsensitive:
            set = m_collator->SetStrength(QuilICU::Collator::Strength::secondary);
            break;
        case caseAccentInsensitive:
            set = m_collator->SetStrength(QuilICU::Collator::Strength::primary);
            break;
        case japaneseIndustrial:
            set = m_collator->SetCaseLevel();
            break;
    }
    if (!set) throw QVE_RangeError(status::ICUCollation_setAttributes, "error setting collation attributes");
    m_asciiByByte = m_collator->TellsAsciiApart();
}

u16string_view ICUCollation::Collator::utf16(const usratom& text, unsigned buffer) {
    return Unicode::ToUTF16(text.bytes(), static_cast<unsigned>(text.type()->scale()), m_units[buffer]);
}

size_t ICUCollation::Collator::sortkey_into_buffer(const usratom& text) {
    const u16string_view units = utf16(text);
    if (m_key.size() <= text.length()) m_key.resize(text.length() + 1);
    const size_t length = m_collator->SortKey(units, m_key);
    if (length == 0 && !units.empty()) throw QVE_RangeError(status::collation_sortkey, "error generating sort key");
    return length;
}

void ICUCollation::Collator::sortkey(std::vector<unsigned char>& key, const usratom& text) {
    require_text(text, "ICUCollation::Collator::sortkey: Null argument");
    const size_t length = sortkey_into_buffer(text);
    key.assign(m_key.begin(), m_key.begin() + static_cast<ptrdiff_t>(length));
}

unsigned ICUCollation::Collator::hash(const usratom& text) {
    if (s_OptimizeICU && m_locale == "en_US") {
        u16string_view units = utf16(text);
        if (m_attributes == caseInsensitive) {
            m_mapped.assign(units);
            Unicode::lower_en_us(m_mapped);
            units = m_mapped;
        }
        return hashfunc(units.data(), units.size() * sizeof(char16_t));
    }
    const size_t length = sortkey_into_buffer(text);  // first, as it may move the buffer
    return hashfunc(m_key.data(), length);
}

int ICUCollation::Collator::compare(const usratom& left, const usratom& right) {
    require_text(left, "collation::compare: Null argument");
    require_text(right, "collation::compare: Null argument");
    if (left.type()->scale() == 1 && right.type()->scale() == 1) {
        return m_collator->Compare(left.bytes(), right.bytes());
    }
    return m_collator->Compare(utf16(left, 0), utf16(right, 1));
}

std::unique_ptr<QuilICU::StringSearch> ICUCollation::Collator::search(u16string_view part, u16string_view text) const {
    auto opened = QuilICU::StringSearch::Open(*m_collator, part, text);
    if (!opened) throw QVE_RangeError(status::collation_search, "error constructing search");
    return opened;
}

bool ICUCollation::Collator::searches_bytes(const usratom& text, const usratom& part) const {
    const auto width = static_cast<unsigned>(text.type()->scale());
    return m_asciiByByte && static_cast<unsigned>(part.type()->scale()) == width &&
           Unicode::Units::IsPrintableASCII(part.bytes(), width) &&
           Unicode::Units::IsPrintableASCII(text.bytes(), width);
}

bool ICUCollation::Collator::startswith(const usratom& text, const usratom& part) {
    require_text(text, "collation::startswith: Null argument");
    require_text(part, "collation::startswith: Null argument");
    if (part.length() == 0 || text.length() == 0) return part.length() == 0;
    if (searches_bytes(text, part)) return text.bytes().starts_with(part.bytes());
    const auto match = search(utf16(part, 1), utf16(text))->First();
    return match && match->begin == 0;
}

bool ICUCollation::Collator::endswith(const usratom& text, const usratom& part) {
    require_text(text, "collation::endswith: Null argument");
    require_text(part, "collation::endswith: Null argument");
    if (part.length() == 0 || text.length() == 0) return part.length() == 0;
    if (searches_bytes(text, part)) return text.bytes().ends_with(part.bytes());
    const u16string_view units = utf16(text);
    const auto match = search(utf16(part, 1), units)->Last();
    return match && match->end == units.size();
}

bool ICUCollation::Collator::contains(const usratom& text, const usratom& part) {
    require_text(text, "collation::contains: Null argument");
    require_text(part, "collation::contains: Null argument");
    if (part.length() == 0 || text.length() == 0) return part.length() == 0;
    if (searches_bytes(text, part)) {
        const auto width = static_cast<unsigned>(text.type()->scale());
        return Unicode::Units::Find(text.bytes(), part.bytes(), 0, width) != std::string_view::npos;
    }
    return search(utf16(part, 1), utf16(text))->First().has_value();
}

int ICUCollation::Collator::find(const usratom& text, const usratom& part, int start) {
    require_text(text, "collation::find: Null argument");
    require_text(part, "collation::find: Null argument");
    if (part.length() == 0) return 1;
    if (text.length() == 0) return 0;
    if (searches_bytes(text, part)) {
        const auto width = static_cast<unsigned>(text.type()->scale());
        const size_t from = start > 1 ? (static_cast<size_t>(start) - 1) * width : 0;
        const size_t at = Unicode::Units::Find(text.bytes(), part.bytes(), from, width);
        return at == std::string_view::npos ? 0 : static_cast<int>(at / width) + 1;
    }
    const u16string_view units = utf16(text);
    const size_t from = start > 1 ? unit_offset(units, static_cast<size_t>(start) - 1) : 0;
    if (from >= units.size()) return 0;
    return place_of(units, search(utf16(part, 1), units)->Following(from));
}

std::optional<QuilICU::Match> ICUCollation::Collator::nth(u16string_view part, u16string_view text, int n) const {
    if (n == 0 || part.empty() || text.empty()) return std::nullopt;
    const auto matches = search(part, text);
    std::optional<QuilICU::Match> match = n > 0 ? matches->First() : matches->Last();
    for (int i = 1; match && i < (n > 0 ? n : -n); ++i) match = n > 0 ? matches->Next() : matches->Previous();
    return match;
}

int ICUCollation::Collator::findNth(const usratom& text, const usratom& part, int n) {
    require_text(text, "ICUCollation::findNth: Null argument");
    require_text(part, "ICUCollation::findNth: Null argument");
    const u16string_view units = utf16(text);
    return place_of(units, nth(utf16(part, 1), units, n));
}

void ICUCollation::Collator::split(usratom& result, const usratom& text, const usratom& delimiter, int n) {
    require_text(text, "ICUCollation::split: Null argument");
    require_text(delimiter, "ICUCollation::split: Null argument");
    const u16string_view units = utf16(text);
    const u16string_view separator = utf16(delimiter, 1);
    std::optional<QuilICU::Match> before;
    std::optional<QuilICU::Match> behind;
    // Whether there is an n-th piece: the first and the last always are.
    bool exists = n == 1 || n == -1;
    if (n > 0) {
        if (n > 1) {
            before = nth(separator, units, n - 1);
            exists = before.has_value();
        }
        if (exists) behind = nth(separator, units, n);
    } else if (n < 0) {
        if (n < -1) {
            behind = nth(separator, units, n + 1);
            exists = behind.has_value();
        }
        if (exists) before = nth(separator, units, n);
    }
    u16string_view piece;
    if (exists) {
        const size_t from = before ? before->end : 0;
        piece = units.substr(from, (behind ? behind->begin : units.size()) - from);
    }
    // A copy, since the result may be one of the arguments.
    assign_text(result, text.type(), std::u16string(piece));
}

void ICUCollation::Collator::replace(usratom& result, const usratom& text, const usratom& from, const usratom& to) {
    for (const usratom* argument : {&text, &from, &to}) require_text(*argument, "ICUCollation::replace: Null argument");
    const u16string_view units = utf16(text);
    const u16string_view old_part = utf16(from, 1);
    const u16string_view new_part = utf16(to, 2);
    std::u16string replaced;
    size_t done = 0;
    if (!old_part.empty() && !units.empty()) {
        const auto matches = search(old_part, units);
        for (auto match = matches->First(); match; match = matches->Next()) {
            if (match->begin < done) continue;
            replaced.append(units, done, match->begin - done).append(new_part);
            done = match->end;
            if (replaced.size() * sizeof(char16_t) > longest_text) return result.assign_null(text.type());
        }
    }
    replaced.append(units, done);
    assign_text(result, text.type(), replaced);
}

void ICUCollation::Collator::upper(const usratom& text, usratom& result) {
    require_text(text, "collation::upper: Null argument");
    if (m_asciiCase && upper_ascii(text, result)) return;
    QuilICU::upper2(utf16(text), m_locale.c_str(), m_mapped);
    assign_text(result, text.type(), m_mapped);
}

void ICUCollation::Collator::lower(const usratom& text, usratom& result) {
    require_text(text, "collation::lower: Null argument");
    if (m_asciiCase && lower_ascii(text, result)) return;
    QuilICU::lower2(utf16(text), m_locale.c_str(), m_mapped);
    assign_text(result, text.type(), m_mapped);
}

}  // namespace qve
