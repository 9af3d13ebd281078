#include <algorithm>
#include <array>

#include "primitives/arithmetic.h"
#include "primitives/capacity.h"
#include "primitives/text_values.h"
#include "primitives/tokens.h"
#include "types/heap_reader.h"
#include "types/parse_value.h"
#include "types/usrtype.h"

namespace qve {
namespace {

template <class Unit>
bool is_blank(Unit unit) {
    return unit == ' ' || unit == '\t' || unit == '\n' || unit == '\r';
}

template <class T, class Unit>
T parse_units(const Unit* text, unsigned length) {
    unsigned begin = 0;
    unsigned end = length;
    while (begin < end && is_blank(text[begin])) ++begin;
    while (begin < end && is_blank(text[end - 1])) --end;
    T value = datatraits<T>::null;
    if (!parse_value(value, begin, end, text, parse_config::standard())) return value;
    if constexpr (std::is_integral_v<T>) {
        double real;
        if (!parse_value(real, begin, end, text, parse_config::standard())) return truncated<T>(real);
    }
    return datatraits<T>::null;
}

// The bytes of a heap are not aligned for wider units.
template <class T, class Unit>
T parse_wide(std::string_view bytes) {
    Unit units[256];
    const size_t length = bytes.size() / sizeof(Unit);
    if (length > std::size(units)) return datatraits<T>::null;  // longer than any value
    std::copy_n(bytes.data(), length * sizeof(Unit), reinterpret_cast<char*>(units));
    return parse_units<T>(units, static_cast<unsigned>(length));
}

template <class T>
T parse_bytes(std::string_view bytes, int scale) {
    switch (scale) {
        case 2:
            return parse_wide<T, char16_t>(bytes);
        case 4:
            return parse_wide<T, char32_t>(bytes);
        default:
            if (bytes.size() > 1024) return datatraits<T>::null;
            return parse_units<T>(bytes.data(), static_cast<unsigned>(bytes.size()));
    }
}

}  // namespace

template <class T, bool Constant>
unsigned parse_text(unsigned n, output_column out, input_column a, unsigned const* sel) {
    n = rows_that_fit(n, out, sizeof(T), sel);
    rows_that_fit(n, is_token_width(a.width));
    if (n == 0) return 0;
    const token_view tokens(a, Constant);
    const heap_reader texts(a.heap);
    const int scale = a.heap ? a.heap->type()->scale() : 1;
    T* results = out.values<T>();
    struct parsed {
        unsigned long long token = usrheap::null_token;
        T value = datatraits<T>::null;
    };
    std::array<parsed, 128> cache;
    for (unsigned k = 0; k < n; ++k) {
        const unsigned i = sel ? sel[k] : k;
        const unsigned long long token = tokens[i];
        parsed& found = cache[token % cache.size()];
        if (found.token != token) {
            const std::string_view bytes = texts[token];
            found = {token, bytes.data() ? parse_bytes<T>(bytes, scale) : datatraits<T>::null};
        }
        results[i] = found.value;
    }
    return n;
}

#define QVE_PARSE_TEXT(T)                                                                           \
    template unsigned parse_text<T, false>(unsigned, output_column, input_column, unsigned const*); \
    template unsigned parse_text<T, true>(unsigned, output_column, input_column, unsigned const*);
QVE_PARSE_TEXT(bit)
QVE_PARSE_TEXT(tiny)
QVE_PARSE_TEXT(short)
QVE_PARSE_TEXT(int)
QVE_PARSE_TEXT(bigint)
QVE_PARSE_TEXT(uchr)
QVE_PARSE_TEXT(usht)
QVE_PARSE_TEXT(ulng)
QVE_PARSE_TEXT(oid)
QVE_PARSE_TEXT(float)
QVE_PARSE_TEXT(double)
QVE_PARSE_TEXT(date)
QVE_PARSE_TEXT(datetime)
QVE_PARSE_TEXT(duration)
#undef QVE_PARSE_TEXT

}  // namespace qve
