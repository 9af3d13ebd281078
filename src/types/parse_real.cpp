#include <charconv>
#include <limits>
#include <vector>

#include "types/parse_digits.h"
#include "types/parse_value.h"

namespace qve {
namespace {

using namespace detail;

// Integers up to this, and powers of ten up to that, are exact in the type, so that one division or multiplication
// rounds once.
template <class T>
struct exact;
template <>
struct exact<double> {
    static constexpr uint64_t mantissa = uint64_t{1} << 53;
    static constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                        1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
};
template <>
struct exact<float> {
    static constexpr uint64_t mantissa = uint64_t{1} << 24;
    static constexpr float powers[] = {1e0F, 1e1F, 1e2F, 1e3F, 1e4F, 1e5F, 1e6F, 1e7F, 1e8F, 1e9F, 1e10F};
};

// [sign] digits [. digits], short enough to be exact: what nearly all numbers are. False when it is something else.
template <class T>
bool short_decimal(T& value, const char* p, const char* end, const parse_config& config) {
    bool negative = false;
    if (p != end && (*p == config.minus || *p == config.plus) && *p) {
        negative = *p == config.minus;
        ++p;
    }
    if (end - p > 20 || p == end) return false;
    uint64_t mantissa = 0;
    const char* const point = read_digits(p, end, mantissa);
    size_t decimals = 0;
    size_t digits = static_cast<size_t>(point - p);
    if (point != end) {
        if (*point != config.decimal) return false;
        const char* const fraction = point + 1;
        // A fraction of 20 digits would not fit, but then nothing here is exact anyway.
        if (read_digits(fraction, end, mantissa) != end) return false;
        decimals = static_cast<size_t>(end - fraction);
        digits += decimals;
    }
    if (digits == 0 || digits > 19 || mantissa > exact<T>::mantissa || decimals >= std::size(exact<T>::powers)) {
        return false;
    }
    const T magnitude = static_cast<T>(mantissa) / exact<T>::powers[decimals];
    value = negative ? -magnitude : magnitude;
    return true;
}

// A number rewritten as std::from_chars reads it.
class plain_number {
public:
    // False when the text is no number.
    bool rewrite(const char* p, const char* end, const parse_config& config) {
        if (p != end && (*p == config.minus || *p == config.plus) && *p) {
            if (*p == config.minus) put('-');
            ++p;
        }
        if (p == end) return false;
        if (lower(*p) == 'i' || lower(*p) == 'n') return word(p, end);
        return mantissa(p, end, config) && exponent(p, end, config) && p == end;
    }
    const char* begin() const { return m_text.data(); }
    const char* end() const { return m_text.data() + m_text.size(); }

private:
    void put(char c) { m_text.push_back(c); }

    bool word(const char* p, const char* end) {
        std::string text;
        for (; p != end && text.size() < 9; ++p) text.push_back(lower(*p));
        if (p != end || (text != "inf" && text != "infinity" && text != "nan")) return false;
        m_text += text;
        return true;
    }
    bool mantissa(const char*& p, const char* end, const parse_config& config) {
        unsigned digits = 0;
        unsigned in_group = 0;
        bool grouped = false;
        for (; p != end; ++p) {
            if (is_digit(*p)) {
                put(*p);
                ++digits;
                ++in_group;
            } else if (*p == config.thousands && *p && *p != config.decimal) {
                if (grouped ? in_group != 3 : in_group == 0 || in_group > 3) return false;
                grouped = true;
                in_group = 0;
            } else {
                break;
            }
        }
        if (grouped && in_group != 3) return false;
        if (p != end && *p == config.decimal && *p) {
            put('.');
            for (++p; p != end && is_digit(*p); ++p) {
                put(*p);
                ++digits;
            }
        }
        return digits > 0;
    }
    // A percent sign takes two from the exponent, so that the number is still rounded once.
    bool exponent(const char*& p, const char* end, const parse_config& config) {
        int power = 0;
        if (p != end && config.exponent && lower(*p) == lower(config.exponent)) {
            ++p;
            const bool negative = p != end && *p == config.minus;
            if (p != end && (*p == config.minus || *p == config.plus) && *p) ++p;
            const char* const first = p;
            // Beyond any range, and far from what an int holds.
            for (; p != end && is_digit(*p); ++p)
                power = power > 99999 ? power : power * 10 + static_cast<int>(digit(*p));
            if (p == first) return false;
            if (negative) power = -power;
        }
        if (p != end && *p == config.percent && *p) {
            power -= 2;
            ++p;
        }
        if (power) m_text += "e" + std::to_string(power);
        return true;
    }

    std::string m_text;
};

template <class T>
bool parse_real(T& value, const char* p, const char* end, const parse_config& config) {
    if (short_decimal(value, p, end, config)) return false;
    value = datatraits<T>::null;
    plain_number number;
    if (!number.rewrite(p, end, config)) return true;
    T parsed{};
    const auto [stop, error] = std::from_chars(number.begin(), number.end(), parsed);
    if (error != std::errc() || stop != number.end()) return true;
    value = parsed;
    return false;
}

bool take_front(const char*& p, const char* end, std::string_view text) {
    if (text.empty() || static_cast<size_t>(end - p) < text.size()) return false;
    if (std::string_view(p, text.size()) != text) return false;
    p += text.size();
    return true;
}
bool take_back(const char* p, const char*& end, std::string_view text) {
    if (text.empty() || static_cast<size_t>(end - p) < text.size()) return false;
    if (std::string_view(end - text.size(), text.size()) != text) return false;
    end -= text.size();
    return true;
}
void trim(const char*& p, const char*& end, char space) {
    while (p != end && *p == space) ++p;
    while (p != end && end[-1] == space) --end;
}

}  // namespace

bool parse_float_char(float& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    return parse_real(value, text + begin, text + end, config);
}

bool parse_double_char(double& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    return parse_real(value, text + begin, text + end, config);
}

bool parse_currency_char(double& value, unsigned begin, unsigned end, const char* text, const parse_config& config) {
    const char* p = text + begin;
    const char* last = text + end;
    bool negative = false;
    value = datatraits<double>::null;
    const std::string_view open(&config.debit_open, config.debit_open ? 1 : 0);
    const std::string_view close(&config.debit_close, config.debit_close ? 1 : 0);
    if (take_front(p, last, open)) {
        if (!take_back(p, last, close)) return true;
        negative = true;
        trim(p, last, config.space);
    }
    // The sign may stand on either side of the currency.
    const std::string_view minus(&config.minus, config.minus ? 1 : 0);
    const bool signed_front = take_front(p, last, minus);
    if (take_front(p, last, config.currency) || take_back(p, last, config.currency)) trim(p, last, config.space);
    if (p == last || (signed_front && (*p == config.minus || *p == config.plus))) return true;
    if (parse_real(value, p, last, config)) return true;
    if (negative != signed_front) value = -value;
    return false;
}

}  // namespace qve
