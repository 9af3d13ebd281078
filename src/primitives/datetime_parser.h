#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "system/QuilICUDateFormat.h"
#include "types/datetime.h"

namespace qve {

/// The moment so many milliseconds after the beginning of 1970 in UTC; nothing outside the range of datetime.
std::optional<datetime> datetime_at(double milliseconds);

/// Reads moments by patterns such as "d. MMMM yyyy HH:mm" in the language of a locale. A pattern is made ready once,
/// and kept as long as few others come between. One thread at a time.
class datetime_parser {
public:
    /// The object of this thread.
    static datetime_parser& local();

    /// The moment that the whole of `text` says; nothing for another text, for a pattern that is none, and outside the
    /// range of datetime. Years of two digits lie between 1930 and 2029.
    std::optional<datetime> operator()(std::u16string_view text, std::u16string_view pattern, const char* locale);

private:
    struct prepared {
        std::string locale;
        std::u16string pattern;
        std::unique_ptr<QuilICU::DateFormat> format;  // null when the pattern is none
    };

    std::vector<prepared> m_prepared;  // most recently used last
};

}  // namespace qve
