#include "types/parse_value.h"

#include <vector>

namespace qve {
namespace {

// The text form "t" and "f" of a bit, its number, and the texts of the format.
bool parse_any_bit(bit& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    return parse_bit_char(value, begin, end, text, config) && parse_boolean_char(value, begin, end, text, config);
}

bool parse(bit& v, unsigned b, unsigned e, const char* t, const parse_config& c) {
    return parse_any_bit(v, b, e, t, c);
}
bool parse(char& v, unsigned b, unsigned e, const char* t, const parse_config& c) {
    return parse_tiny_char(v, b, e, t, c);
}
bool parse(short& v, unsigned b, unsigned e, const char* t, const parse_config& c) {
    return parse_short_char(v, b, e, t, c);
}
bool parse(int& v, unsigned b, unsigned e, const char* t, const parse_config& c) {
    return parse_long_char(v, b, e, t, c);
}
bool parse(long long& v, unsigned b, unsigned e, const char* t, const parse_config& c) {
    return parse_bigint_char(v, b, e, t, c);
}
bool parse(unsigned char& v, unsigned b, unsigned e, const char* t, const parse_config& c) {
    return parse_uchr_char(v, b, e, t, c);
}
bool parse(unsigned short& v, unsigned b, unsigned e, const char* t, const parse_config& c) {
    return parse_usht_char(v, b, e, t, c);
}
bool parse(unsigned& v, unsigned b, unsigned e, const char* t, const parse_config& c) {
    return parse_ulng_char(v, b, e, t, c);
}
bool parse(unsigned long long& v, unsigned b, unsigned e, const char* t, const parse_config& c) {
    return parse_oid_char(v, b, e, t, c);
}
bool parse(float& v, unsigned b, unsigned e, const char* t, const parse_config& c) {
    return parse_float_char(v, b, e, t, c);
}
bool parse(double& v, unsigned b, unsigned e, const char* t, const parse_config& c) {
    return parse_double_char(v, b, e, t, c);
}
bool parse(date& v, unsigned b, unsigned e, const char* t, const parse_config& c) {
    return parse_date_char(v, b, e, t, c);
}
bool parse(datetime& v, unsigned b, unsigned e, const char* t, const parse_config& c) {
    return parse_datetime_char(v, b, e, t, c);
}
bool parse(duration& v, unsigned b, unsigned e, const char* t, const parse_config& c) {
    return parse_duration_char(v, b, e, t, c);
}

}  // namespace

template <class T, class Unit>
bool parse_value(T& value, unsigned begin, unsigned end, const Unit* text, const parse_config& config) {
    if constexpr (sizeof(Unit) == 1) {
        return parse(value, begin, end, text, config);
    } else {
        // The text of a value is ASCII, so a unit beyond that ends the matter.
        constexpr unsigned on_stack = 128;
        const unsigned length = end - begin;
        char buffer[on_stack];
        std::vector<char> longer(length > on_stack ? length : 0);
        char* const narrowed = length > on_stack ? longer.data() : buffer;
        for (unsigned i = 0; i < length; ++i) {
            const Unit unit = text[begin + i];
            if (unit > 0x7F) {
                value = datatraits<T>::null;
                return true;
            }
            narrowed[i] = static_cast<char>(unit);
        }
        return parse(value, 0, length, narrowed, config);
    }
}

#define QVE_PARSE_VALUE(T)                                                                   \
    template bool parse_value(T&, unsigned, unsigned, const char*, const parse_config&);     \
    template bool parse_value(T&, unsigned, unsigned, const char16_t*, const parse_config&); \
    template bool parse_value(T&, unsigned, unsigned, const char32_t*, const parse_config&);
QVE_PARSE_VALUE(bit)
QVE_PARSE_VALUE(char)
QVE_PARSE_VALUE(short)
QVE_PARSE_VALUE(int)
QVE_PARSE_VALUE(long long)
QVE_PARSE_VALUE(unsigned char)
QVE_PARSE_VALUE(unsigned short)
QVE_PARSE_VALUE(unsigned int)
QVE_PARSE_VALUE(unsigned long long)
QVE_PARSE_VALUE(float)
QVE_PARSE_VALUE(double)
QVE_PARSE_VALUE(date)
QVE_PARSE_VALUE(datetime)
QVE_PARSE_VALUE(duration)
#undef QVE_PARSE_VALUE

bool parse_varchar_char(std::string& value, unsigned begin, unsigned end, const char* text,
                        const parse_config& config) {
    const char* p = text + begin;
    const char* const last = text + end;
    if (p == last || !*p || (*p != config.double_quote && *p != config.single_quote)) {
        value.assign(p, last);
        return false;
    }
    const char quote = *p++;
    value.clear();
    while (p != last) {
        const char c = *p++;
        if (c == quote) {
            if (p == last) return false;
            if (*p == quote) ++p;
            // Any other quote in the middle is text.
        } else if (c == config.escape && c && p != last && (*p == quote || *p == c)) {
            value.push_back(*p++);
            continue;
        }
        value.push_back(c);
    }
    value.clear();
    return true;
}

}  // namespace qve
