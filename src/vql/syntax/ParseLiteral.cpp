// The values of literal tokens.
#include <limits>
#include <sstream>

#include "system/unicode.h"
#include "types/date.h"
#include "types/datetime.h"
#include "types/duration.h"
#include "vql/syntax/VQLLexer.h"
#include "vql/syntax/number_text.h"
#include "vql/syntax/status.h"

namespace qve {

namespace {

VQLDataValue ParseString(std::wstring_view text, const VQLPosition& position) {
    std::wstring value;
    value.reserve(text.size());
    for (size_t i = 1; i < text.size(); ++i) {
        wchar_t c = text[i];
        if (c == L'"') {
            if (i + 1 == text.size()) return VQLDataValue(std::move(value));
            break;
        }
        if (c == L'\\') {
            if (++i == text.size())
                throw VQLParseException(status::VQLLexer_ParseLiteral_StringEscape, L"malformed string literal",
                                        position);
            c = text[i];
            if (c == L'n')
                c = L'\n';
            else if (c == L'r')
                c = L'\r';
            else if (c == L't')
                c = L'\t';
        }
        value += c;
    }
    throw VQLParseException(status::VQLLexer_ParseLiteral_StringEnd, L"malformed string literal", position);
}

/// The whole text as a T, or nothing.
template <class T>
std::optional<T> ParseTemporal(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    T value{};
    stream >> value;
    if (!stream || stream.peek() != std::istringstream::traits_type::eof()) return {};
    return value;
}

VQLDataValue ParseDate(std::wstring_view text, const VQLPosition& position) {
    const size_t end = text.find(L'#', 1);
    if (end == std::wstring_view::npos)
        throw VQLParseException(status::VQLLexer_ParseLiteral_DateEnd, L"malformed date constant", position);
    const std::string body = narrow(text.substr(1, end - 1));
    if (const auto day = ParseTemporal<date>(body))
        return VQLDataValue(VQLDateFromJulianDay(static_cast<int>(day->value)));
    if (const auto moment = ParseTemporal<datetime>(body)) return VQLDataValue(VQLDatetimeFromTicks(moment->value));
    if (const auto span = ParseTemporal<duration>(body)) {
        const long long days = span->value / ticks_per_day;
        if (days >= std::numeric_limits<int>::min() && days <= std::numeric_limits<int>::max())
            return VQLDataValue(VQLDurationFromTicks(span->value));
    }
    throw VQLParseException(status::VQLLexer_ParseLiteral_Date, L"malformed datetime constant", position);
}

}  // namespace

VQLDataValue VQLLexer::ParseLiteral(const wchar_t* text, const VQLPosition& position) {
    const std::wstring_view word(text);
    if (word.substr(0, 1) == L"\"") return ParseString(word, position);
    if (IsBoolean(text, static_cast<long>(word.size()))) return VQLDataValue(*text == L't' || *text == L'T');
    if (word.substr(0, 1) == L"#") return ParseDate(word, position);
    if (const auto integer = ParseInteger(word)) return VQLDataValue(*integer);
    if (const auto number = ParseDouble(word)) return VQLDataValue(*number);
    throw VQLParseException(status::VQLLexer_ParseLiteral_Number, L"malformed literal", position);
}

}  // namespace qve
