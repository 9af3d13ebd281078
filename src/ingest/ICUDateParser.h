#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ingest/ScalarParser.h"
#include "ingest/TextColumnParser.h"
#include "system/QuilICUDateFormat.h"
#include "types/date.h"
#include "types/datetime.h"

namespace qve {

/// What a pattern of a locale gives: days, moments, or moments whose time of day is written "HH:mm:ss" whatever the
/// locale says.
struct ICUDateParserTraits {
    using value_type = date;
    static constexpr std::u16string_view suffix = u"";
    static date FromMoment(datetime moment) { return moment.day(); }
};
struct ICUDateTimeParserTraits {
    using value_type = datetime;
    static constexpr std::u16string_view suffix = u"";
    static datetime FromMoment(datetime moment) { return moment; }
};
struct ICUDateISOTimeParserTraits : ICUDateTimeParserTraits {
    static constexpr std::u16string_view suffix = u" HH:mm:ss";
};

/// Reads values by a date format of ICU. That takes about a microsecond, and few texts of a column differ: what was
/// read is remembered.
template <class Traits>
class ICUDateReader {
public:
    using T = typename Traits::value_type;

    /// `prototype` is shared, and cloned by Prepare. Years of two digits lie in the hundred years from `firstYear` on.
    ICUDateReader(std::shared_ptr<const QuilICU::DateFormat> prototype, int firstYear);
    /// The copy reads for itself.
    ICUDateReader(const ICUDateReader& other) : ICUDateReader(other.m_prototype, other.m_firstYear) {}
    ICUDateReader(ICUDateReader&& other) noexcept = default;
    ICUDateReader& operator=(const ICUDateReader&) = delete;

    void Prepare();
    bool operator()(T& value, unsigned begin, unsigned end, const char* text, const parse_config& config);

private:
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    std::shared_ptr<const QuilICU::DateFormat> m_prototype;
    int m_firstYear;
    std::unique_ptr<QuilICU::DateFormat> m_format;
    std::unordered_map<std::string, std::optional<T>, Hash, std::equal_to<>> m_known;
};

/// Dates as people of a locale write them, with names of months. One of these patterns:
///
///     MakeRef<ICUDateParser<ICUDateParserTraits>>(type, config, 4, "de_DE", u"d. MMMM y")
template <class Traits>
class ICUDateParser : public ScalarParser<typename Traits::value_type, ICUDateReader<Traits>> {
    using Base = ScalarParser<typename Traits::value_type, ICUDateReader<Traits>>;

public:
    /// Throws QVE_InvalidArgument 40573 for a pattern that is none.
    ICUDateParser(usrprops type, parse_config config, unsigned rank, const std::string& locale,
                  std::u16string_view pattern);
    ICUDateParser(usrprops type, parse_config config, unsigned rank, const ICUDateReader<Traits>& reader)
        : Base(std::move(type), std::move(config), rank, reader) {}

    RefCntPtr<TextColumnParser> Clone() const override;
    /// Throws QVE_RuntimeError 40574 to 40576 when ICU fails.
    void Reset(unsigned rows) override;
};

/// The locale whose dates are expected: that of the text property "locale", or "en_US".
std::string GetDateLocale(const usrprops& textProperties);

/// Parsers for the formats of the locale in which months have names; those in digits are a matter of the date order.
TextColumnParsers GetDefaultDateFormatsByLocale(const parse_config& config, const std::string& locale);

/// The orders in which the parts of a date in digits may stand; the locale's own comes first, as others hold for the
/// same texts.
std::vector<std::wstring> GetDateOrders(const std::string& locale);

/// The parser for the pattern of the text property "datetime-format": of moments when it names a part of the day, and
/// of days otherwise.
RefCntPtr<TextColumnParser> GetDateFormatParser(const parse_config& config, const std::string& locale,
                                                const std::wstring& pattern);

}  // namespace qve
