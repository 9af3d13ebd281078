#include <limits>

#include "types/parse_digits.h"
#include "types/parse_value.h"

namespace qve {
namespace {

using namespace detail;

// Digits in groups of three behind a first group of one to three. False when the separators are elsewhere, or the
// number does not fit in 64 bits.
bool grouped(const char* p, const char* end, char separator, uint64_t& value) {
    value = 0;
    unsigned in_group = 0;
    bool first_group = true;
    for (; p != end; ++p) {
        if (*p == separator) {
            if (first_group ? in_group == 0 || in_group > 3 : in_group != 3) return false;
            first_group = false;
            in_group = 0;
        } else {
            const unsigned d = digit(*p);
            if (d > 9 || value > (std::numeric_limits<uint64_t>::max() - d) / 10) return false;
            value = value * 10 + d;
            ++in_group;
        }
    }
    return first_group ? in_group > 0 : in_group == 3;
}

template <class T>
bool parse_integer(T& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    const char* p = text + begin;
    const char* const last = text + end;
    value = datatraits<T>::null;
    bool negative = false;
    if (p != last && (*p == config.minus || *p == config.plus) && *p) {
        negative = *p == config.minus;
        ++p;
    }
    if (p == last) return true;
    uint64_t magnitude = 0;
    const bool short_enough = last - p <= 19;
    if (!short_enough || read_digits(p, last, magnitude) != last) {
        if (!grouped(p, last, config.thousands ? config.thousands : '0', magnitude)) return true;
    }
    if constexpr (std::is_signed_v<T>) {
        // The most negative value is the null.
        if (magnitude > static_cast<uint64_t>(std::numeric_limits<T>::max())) return true;
        value = static_cast<T>(negative ? -static_cast<long long>(magnitude) : static_cast<long long>(magnitude));
    } else {
        // So is the greatest unsigned one.
        if (magnitude >= std::numeric_limits<T>::max() || (negative && magnitude)) return true;
        value = static_cast<T>(magnitude);
    }
    return false;
}

bool equal_in_any_case(const char* p, const char* end, std::string_view text) {
    if (static_cast<size_t>(end - p) != text.size()) return false;
    for (size_t i = 0; i < text.size(); ++i) {
        if (lower(p[i]) != lower(text[i])) return false;
    }
    return true;
}

}  // namespace

bool parse_tiny_char(char& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    return parse_integer(value, begin, end, text, config);
}
bool parse_short_char(short& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    return parse_integer(value, begin, end, text, config);
}
bool parse_long_char(int& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    return parse_integer(value, begin, end, text, config);
}
bool parse_bigint_char(long long& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    return parse_integer(value, begin, end, text, config);
}
bool parse_uchr_char(unsigned char& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    return parse_integer(value, begin, end, text, config);
}
bool parse_usht_char(unsigned short& value, unsigned begin, unsigned end, const char* text,
                     const parse_config& config) {
    return parse_integer(value, begin, end, text, config);
}
bool parse_ulng_char(unsigned& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    return parse_integer(value, begin, end, text, config);
}
bool parse_oid_char(unsigned long long& value, unsigned begin, unsigned end, const char* text,
                    const parse_config& config) {
    return parse_integer(value, begin, end, text, config);
}

bool parse_bit_char(bit& value, unsigned begin, unsigned end, const char* text, const parse_config&) {
    const bool known = end - begin == 1 && (text[begin] == '0' || text[begin] == '1');
    value = known ? bit{static_cast<unsigned char>(text[begin] - '0')} : datatraits<bit>::null;
    return !known;
}

bool parse_boolean_char(bit& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    const char* p = text + begin;
    const char* const last = text + end;
    const auto says = [&](const std::string& word, std::string_view usual) {
        return equal_in_any_case(p, last, word) || (word == usual && equal_in_any_case(p, last, usual.substr(0, 1)));
    };
    value = datatraits<bit>::null;
    if (p == last) return true;
    if (says(config.true_text, "true")) {
        value = bit{1};
    } else if (says(config.false_text, "false")) {
        value = bit{0};
    }
    return is_null(value);
}

}  // namespace qve
