#include "tests/primitives/text_reference.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <map>
#include <regex>

#include "system/unicode.h"
#include "types/calendar.h"
#include "types/hashfunc.h"

namespace qve::test {
namespace {

using arguments = const std::vector<text_or_cell>&;
using string = std::u32string;

bool any_null(arguments a) {
    return std::any_of(a.begin(), a.end(), [](const text_or_cell& x) { return x.is_null(); });
}
text_or_cell truth(bool value) {
    return text_or_cell::of(cell{false, false, 0, value});
}
text_or_cell integer(__int128 value) {
    return text_or_cell::of(cell{false, false, 0, value});
}
const text_or_cell null_number = text_or_cell::of(null_cell());
const text_or_cell null_text = text_or_cell::of(characters());

// Counts lose their fraction; -1, whose bits are all ones, is none.
long long count_of(const text_or_cell& x) {
    return static_cast<long long>(x.number.number());
}

template <class Holds>
text_or_cell comparison(arguments a, Holds holds) {
    if (any_null(a)) return null_number;
    const int order = a[0].text->compare(*a[1].text);  // by code points, as UTF-8 is by bytes
    return truth(holds(order));
}
text_or_cell eq(const std::wstring&, arguments a) {
    return comparison(a, [](int order) { return order == 0; });
}
text_or_cell ne(const std::wstring&, arguments a) {
    return comparison(a, [](int order) { return order != 0; });
}
text_or_cell lt(const std::wstring&, arguments a) {
    return comparison(a, [](int order) { return order < 0; });
}
text_or_cell le(const std::wstring&, arguments a) {
    return comparison(a, [](int order) { return order <= 0; });
}
text_or_cell gt(const std::wstring&, arguments a) {
    return comparison(a, [](int order) { return order > 0; });
}
text_or_cell ge(const std::wstring&, arguments a) {
    return comparison(a, [](int order) { return order >= 0; });
}
text_or_cell isdistinct(const std::wstring&, arguments a) {
    return truth(a[0].text != a[1].text);
}
text_or_cell isnotdistinct(const std::wstring&, arguments a) {
    return truth(a[0].text == a[1].text);
}
text_or_cell isnull(const std::wstring&, arguments a) {
    return truth(!a[0].text);
}
text_or_cell isnotnull(const std::wstring&, arguments a) {
    return truth(a[0].text.has_value());
}
text_or_cell greatest(const std::wstring&, arguments a) {
    return any_null(a) ? null_text : text_or_cell::of(std::max(a[0].text, a[1].text));
}
text_or_cell least(const std::wstring&, arguments a) {
    return any_null(a) ? null_text : text_or_cell::of(std::min(a[0].text, a[1].text));
}
text_or_cell hash(const std::wstring&, arguments a) {
    if (!a[0].text) return text_or_cell::of(null_cell());  // all ones
    const std::string bytes = to_utf8(*a[0].text);
    return text_or_cell::of(wrapped(type_info::of(L"ulng"), hashfunc(bytes.data(), bytes.size())));
}

template <class Change>
text_or_cell changed(arguments a, Change change) {
    if (any_null(a)) return null_text;
    return text_or_cell::of(change(*a[0].text));
}
text_or_cell copy(const std::wstring&, arguments a) {
    return a[0];
}
string each(string text, char32_t (*change)(char32_t)) {
    std::transform(text.begin(), text.end(), text.begin(), change);
    return text;
}
text_or_cell upper(const std::wstring&, arguments a) {
    return changed(a, [](const string& s) {
        return each(s,
                    [](char32_t c) { return (c >= 'a' && c <= 'z') || c == 0xE9 ? static_cast<char32_t>(c - 32) : c; });
    });
}
text_or_cell lower(const std::wstring&, arguments a) {
    return changed(a, [](const string& s) {
        return each(s,
                    [](char32_t c) { return (c >= 'A' && c <= 'Z') || c == 0xC9 ? static_cast<char32_t>(c + 32) : c; });
    });
}
string trimmed(const string& s, bool left, bool right) {
    size_t begin = 0;
    size_t end = s.size();
    while (left && begin < end && s[begin] == ' ') ++begin;
    while (right && begin < end && s[end - 1] == ' ') --end;
    return s.substr(begin, end - begin);
}
text_or_cell trim(const std::wstring&, arguments a) {
    return changed(a, [](const string& s) { return trimmed(s, true, true); });
}
text_or_cell ltrim(const std::wstring&, arguments a) {
    return changed(a, [](const string& s) { return trimmed(s, true, false); });
}
text_or_cell rtrim(const std::wstring&, arguments a) {
    return changed(a, [](const string& s) { return trimmed(s, false, true); });
}
template <class Part>
text_or_cell part(arguments a, Part take) {
    if (any_null(a) || count_of(a[1]) < 0) return null_text;
    const string& s = *a[0].text;
    return text_or_cell::of(take(s, std::min<size_t>(s.size(), static_cast<size_t>(count_of(a[1])))));
}
text_or_cell left(const std::wstring&, arguments a) {
    return part(a, [](const string& s, size_t n) { return s.substr(0, n); });
}
text_or_cell right(const std::wstring&, arguments a) {
    return part(a, [](const string& s, size_t n) { return s.substr(s.size() - n); });
}
text_or_cell mid(const std::wstring&, arguments a) {
    return part(a, [](const string& s, size_t n) { return s.substr(n); });
}
text_or_cell char_length(const std::wstring&, arguments a) {
    return any_null(a) ? null_number : integer(static_cast<long long>(a[0].text->size()));
}
text_or_cell ascii(const std::wstring&, arguments a) {
    return any_null(a) ? null_number : integer(a[0].text->empty() ? 0 : a[0].text->front());
}
text_or_cell chr(const std::wstring&, arguments a) {
    if (any_null(a) || a[0].number.number() < 0) return null_text;
    return text_or_cell::of(string(1, static_cast<char32_t>(count_of(a[0]))));
}
text_or_cell space(const std::wstring&, arguments a) {
    if (any_null(a) || count_of(a[0]) < 0) return null_text;
    return text_or_cell::of(string(static_cast<size_t>(count_of(a[0])), ' '));
}
text_or_cell concat(const std::wstring&, arguments a) {
    return any_null(a) ? null_text : text_or_cell::of(*a[0].text + *a[1].text);
}
text_or_cell contains(const std::wstring&, arguments a) {
    return any_null(a) ? null_number : truth(a[0].text->find(*a[1].text) != string::npos);
}
text_or_cell startswith(const std::wstring&, arguments a) {
    return any_null(a) ? null_number : truth(a[0].text->starts_with(*a[1].text));
}
text_or_cell endswith(const std::wstring&, arguments a) {
    return any_null(a) ? null_number : truth(a[0].text->ends_with(*a[1].text));
}
text_or_cell place_from(arguments a, size_t start) {
    if (a[1].text->empty()) return integer(1);
    const size_t at = a[0].text->find(*a[1].text, start);
    return integer(at == string::npos ? 0 : static_cast<long long>(at) + 1);
}
text_or_cell find2(const std::wstring&, arguments a) {
    return any_null(a) ? null_number : place_from(a, 0);
}
text_or_cell find3(const std::wstring&, arguments a) {
    if (any_null(a)) return null_number;
    return place_from(a, static_cast<size_t>(std::max(count_of(a[2]), 1LL)) - 1);
}
// Where the occurrences of the second text are, none inside another.
std::vector<size_t> occurrences(const string& s, const string& wanted) {
    std::vector<size_t> places;
    if (wanted.empty()) return places;
    for (size_t at = s.find(wanted); at != string::npos; at = s.find(wanted, at + wanted.size())) places.push_back(at);
    return places;
}
text_or_cell findnth(const std::wstring&, arguments a) {
    if (any_null(a)) return null_number;
    std::vector<size_t> places = occurrences(*a[0].text, *a[1].text);
    long long n = count_of(a[2]);
    if (n < 0) std::reverse(places.begin(), places.end());
    n = std::llabs(n);
    return integer(n == 0 || n > static_cast<long long>(places.size()) ? 0 : static_cast<long long>(places[n - 1]) + 1);
}
text_or_cell replace(const std::wstring&, arguments a) {
    if (any_null(a)) return null_text;
    string result;
    size_t from = 0;
    for (const size_t at : occurrences(*a[0].text, *a[1].text)) {
        result += a[0].text->substr(from, at - from) + *a[2].text;
        from = at + a[1].text->size();
    }
    return text_or_cell::of(result + a[0].text->substr(from));
}
text_or_cell split(const std::wstring&, arguments a) {
    if (any_null(a)) return null_text;
    std::vector<string> tokens;
    size_t from = 0;
    for (const size_t at : occurrences(*a[0].text, *a[1].text)) {
        tokens.push_back(a[0].text->substr(from, at - from));
        from = at + a[1].text->size();
    }
    tokens.push_back(a[0].text->substr(from));
    long long n = count_of(a[2]);
    if (n < 0) std::reverse(tokens.begin(), tokens.end());
    n = std::llabs(n);
    if (n == 0 || n > static_cast<long long>(tokens.size())) return text_or_cell::of(string());
    return text_or_cell::of(tokens[n - 1]);
}

std::wstring wide(const string& s) {
    return std::wstring(s.begin(), s.end());
}
characters of_wide(const std::wstring& s) {
    return string(s.begin(), s.end());
}
text_or_cell rcontains(const std::wstring&, arguments a) {
    return any_null(a) ? null_number : truth(std::regex_search(wide(*a[0].text), std::wregex(wide(*a[1].text))));
}
text_or_cell rextract(const std::wstring&, arguments a) {
    if (any_null(a) || count_of(a[2]) != 0) return null_text;  // no pattern of the test has groups
    std::wsmatch match;
    const std::wstring text = wide(*a[0].text);
    if (!std::regex_search(text, match, std::wregex(wide(*a[1].text)))) return null_text;
    return text_or_cell::of(of_wide(match.str()));
}
text_or_cell rreplace(const std::wstring&, arguments a) {
    if (any_null(a)) return null_text;
    return text_or_cell::of(
        of_wide(std::regex_replace(wide(*a[0].text), std::wregex(wide(*a[1].text)), wide(*a[2].text))));
}

text_or_cell parse(const std::wstring& result, arguments a) {
    return text_or_cell::of(parsed(type_info::of(result), a[0].text));
}

const std::map<std::wstring, text_reference>& definitions() {
    static const std::map<std::wstring, text_reference> table = {
        {L"eq", eq},
        {L"ne", ne},
        {L"lt", lt},
        {L"le", le},
        {L"gt", gt},
        {L"ge", ge},
        {L"isdistinct", isdistinct},
        {L"isnotdistinct", isnotdistinct},
        {L"isnull", isnull},
        {L"isnotnull", isnotnull},
        {L"greatest", greatest},
        {L"least", least},
        {L"hash", hash},
        {L"usr1", copy},
        {L"usr2", copy},
        {L"usr4", copy},
        {L"usr8", copy},
        {L"sortkey", copy},  // of the binary collation
        {L"upper", upper},
        {L"lower", lower},
        {L"trim", trim},
        {L"ltrim", ltrim},
        {L"rtrim", rtrim},
        {L"left", left},
        {L"right", right},
        {L"mid", mid},
        {L"char_length", char_length},
        {L"ascii", ascii},
        {L"chr", chr},
        {L"space", space},
        {L"concat", concat},
        {L"contains", contains},
        {L"startswith", startswith},
        {L"endswith", endswith},
        {L"find2", find2},
        {L"find3", find3},
        {L"findnth", findnth},
        {L"replace", replace},
        {L"split", split},
        {L"rcontains", rcontains},
        {L"rextract", rextract},
        {L"rreplace", rreplace},
        {L"tiny", parse},
        {L"short", parse},
        {L"long", parse},
        {L"bigint", parse},
        {L"uchr", parse},
        {L"usht", parse},
        {L"ulng", parse},
        {L"oid", parse},
        {L"float", parse},
        {L"double", parse},
        {L"date", parse},
        {L"to_int", parse},
        {L"to_real", parse},
        {L"to_date", parse},
    };
    return table;
}

}  // namespace

std::string to_utf8(const std::u32string& text) {
    return narrow(std::wstring(text.begin(), text.end()));
}
std::u32string from_utf8(const std::string& text) {
    const std::wstring result = widen(text);
    return {result.begin(), result.end()};
}

std::string text_of(const text_or_cell& value) {
    if (!value.is_text) return text_of(value.number);
    return value.text ? '"' + to_utf8(*value.text) + '"' : "null";
}
bool same(const text_or_cell& a, const text_or_cell& b) {
    return a.is_text == b.is_text && (a.is_text ? a.text == b.text : same(a.number, b.number));
}

cell parsed(const type_info& type, const characters& text) {
    if (!text) return null_cell();
    const std::string bytes = to_utf8(trimmed(*text, true, true));
    if (type.name == L"date") {
        int year = 0, month = 0, day = 0, length = 0;
        if (std::sscanf(bytes.c_str(), "%4d-%2d-%2d%n", &year, &month, &day, &length) != 3) return null_cell();
        if (static_cast<size_t>(length) != bytes.size() || !calendar::is_civil(year, month, day)) return null_cell();
        return wrapped(type, calendar::days(year, month, day));
    }
    char* end = nullptr;
    const long double number = std::strtold(bytes.c_str(), &end);
    if (bytes.empty() || *end) return null_cell();
    if (type.is_real) {
        return real_cell(type.width == 4 ? static_cast<float>(number) : static_cast<double>(number));
    }
    const long double whole = std::trunc(number);
    const long double high = std::ldexp(1.0L, static_cast<int>(8 * type.width) - type.is_signed);
    if (whole >= high || whole < (type.is_signed ? -high : 0.0L)) return null_cell();
    return wrapped(type, static_cast<__int128>(whole));
}

characters printed(const type_info& type, const cell& value) {
    if (value.null) return {};
    char buffer[64];
    std::to_chars_result done{};
    if (type.name == L"bit") return value.i ? U"t" : U"f";
    if (type.name == L"float") {
        done = std::to_chars(buffer, buffer + sizeof buffer, static_cast<float>(value.d));
    } else if (type.is_real) {
        done = std::to_chars(buffer, buffer + sizeof buffer, value.d);
    } else if (type.is_signed) {
        done = std::to_chars(buffer, buffer + sizeof buffer, static_cast<long long>(value.i));
    } else {
        done = std::to_chars(buffer, buffer + sizeof buffer, static_cast<unsigned long long>(value.i));
    }
    return from_utf8(std::string(buffer, done.ptr));
}

text_reference text_reference_of(const std::wstring& operation) {
    const auto found = definitions().find(operation);
    return found == definitions().end() ? nullptr : found->second;
}

}  // namespace qve::test
