#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "system/QuilICUCollator.h"
#include "system/QuilICUStringSearch.h"
#include "types/ICUCollation.h"

namespace qve {

/// What one thread needs to work with an ICU collation: an ICU collator of its own and buffers. The operations are
/// those of the collation, and so are their contracts.
class ICUCollation::Collator {
public:
    /// Throws QVE_RangeError 40192 or 40193 when ICU refuses the locale or its attributes, status::collation_locale for
    /// a locale without a name.
    Collator(std::string locale, Attributes attributes);

    void sortkey(std::vector<unsigned char>& key, const usratom& text);
    unsigned hash(const usratom& text);
    int compare(const usratom& left, const usratom& right);
    bool startswith(const usratom& text, const usratom& part);
    bool endswith(const usratom& text, const usratom& part);
    bool contains(const usratom& text, const usratom& part);
    bool compares_ascii_by_byte() const { return m_asciiByByte; }
    int find(const usratom& text, const usratom& part, int start);
    int findNth(const usratom& text, const usratom& part, int n);
    void split(usratom& result, const usratom& text, const usratom& delimiter, int n);
    void replace(usratom& result, const usratom& text, const usratom& from, const usratom& to);
    void upper(const usratom& text, usratom& result);
    void lower(const usratom& text, usratom& result);

private:
    /// The text in UTF-16; a view of the atom or of one of the three buffers.
    std::u16string_view utf16(const usratom& text, unsigned buffer = 0);
    /// A search over two texts that are not empty.
    std::unique_ptr<QuilICU::StringSearch> search(std::u16string_view part, std::u16string_view text) const;
    /// The n-th match, from the end for a negative n.
    std::optional<QuilICU::Match> nth(std::u16string_view part, std::u16string_view text, int n) const;
    /// True when the bytes of the two tell all that a search can find out.
    bool searches_bytes(const usratom& text, const usratom& part) const;
    size_t sortkey_into_buffer(const usratom& text);

    std::string m_locale;
    Attributes m_attributes;
    // Letters of ASCII have the usual other case.
    bool m_asciiCase;
    bool m_asciiByByte;
    std::unique_ptr<QuilICU::Collator> m_collator;
    std::u16string m_units[3];
    std::u16string m_mapped;
    std::vector<unsigned char> m_key;
};

}  // namespace qve
