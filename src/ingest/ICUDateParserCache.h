#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "system/QuilICUDateFormat.h"

namespace qve {

/// The date formats of locales, which take long to make. Any thread may ask; what comes back is shared, and only to be
/// cloned.
class ICUDateParserCache {
public:
    /// The patterns of a locale, as "d. MMMM y".
    struct LocaleEntry {
        std::vector<std::u16string> dates;
        std::vector<std::u16string> datetimes;
        std::wstring order;  ///< of the parts of a date that is written in digits, as "dmy"
    };

    static std::shared_ptr<const LocaleEntry> TryGetOrAddLocaleEntry(const std::string& locale);
    /// Null for a pattern that is none.
    static std::shared_ptr<const QuilICU::DateFormat> TryGetSimpleDateFormatWithCaching(const std::string& locale,
                                                                                        std::u16string_view pattern);
};

/// The letters of a pattern that stand for parts of a moment: those outside of its own words.
std::u16string PatternLetters(std::u16string_view pattern);

/// `text` with the blanks that do not break lines as plain ones, and without the marks of direction: how a pattern and
/// what is read by it compare.
std::u16string PlainBlanks(std::u16string_view text);

}  // namespace qve
