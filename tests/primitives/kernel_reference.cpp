#include "tests/primitives/kernel_reference.h"

#include <bit>
#include <cmath>
#include <limits>
#include <map>

namespace qve::test {
namespace {

using types_of = const std::vector<const type_info*>&;
using cells = const std::vector<cell>&;

bool any_null(cells a) {
    for (const cell& c : a) {
        if (c.null) return true;
    }
    return false;
}

cell truth(bool value) {
    return {false, false, 0, value};
}

bool is_time(const type_info* type) {
    return type->name == L"date" || type->name == L"datetime" || type->name == L"duration";
}

// A real result in the precision of the result's type.
cell as_real(const type_info& result, double value) {
    return real_cell(result.width == 4 ? static_cast<float>(value) : value);
}
cell real_to_integer(const type_info& result, double value) {
    if (std::isnan(value)) return null_cell();
    const double whole = std::trunc(value);
    const double high = std::ldexp(1.0, static_cast<int>(8 * result.width) - result.is_signed);
    const double low = result.is_signed ? -high : 0.0;
    if (whole < low || whole >= high) return null_cell();
    return wrapped(result, static_cast<__int128>(whole));
}

// Without a detour over double, which would round twice.
float as_float(const cell& value) {
    return value.real ? static_cast<float>(value.d) : static_cast<float>(value.i);
}

template <class Real, class Integer>
cell arithmetic(const type_info& result, cells a, Real real, Integer integer) {
    if (any_null(a)) return null_cell();
    if (!result.is_real) return wrapped(result, integer(a[0].i, a[1].i));
    if (result.width == 4) {
        const float x = as_float(a[0]);
        const float y = as_float(a[1]);
        return real_cell(static_cast<float>(real(x, y)));
    }
    return real_cell(real(a[0].number(), a[1].number()));
}

cell plus(const type_info& r, types_of, cells a) {
    return arithmetic(
        r, a, [](auto x, auto y) { return x + y; }, [](__int128 x, __int128 y) { return x + y; });
}
cell minus(const type_info& r, types_of, cells a) {
    return arithmetic(
        r, a, [](auto x, auto y) { return x - y; }, [](__int128 x, __int128 y) { return x - y; });
}
cell times(const type_info& r, types_of, cells a) {
    return arithmetic(
        r, a, [](auto x, auto y) { return x * y; }, [](__int128 x, __int128 y) { return x * y; });
}
cell divide(const type_info& r, types_of, cells a) {
    if (any_null(a) || a[1].number() == 0) return null_cell();
    return arithmetic(
        r, a, [](auto x, auto y) { return x / y; }, [](__int128 x, __int128) { return x; });
}
cell div_(const type_info& r, types_of, cells a) {
    return any_null(a) || a[1].i == 0 ? null_cell() : wrapped(r, a[0].i / a[1].i);
}
cell mod(const type_info& r, types_of, cells a) {
    return any_null(a) || a[1].i == 0 ? null_cell() : wrapped(r, a[0].i % a[1].i);
}
cell power(const type_info&, types_of, cells a) {
    return any_null(a) ? null_cell() : real_cell(std::pow(a[0].number(), a[1].number()));
}
cell atan2_(const type_info& r, types_of, cells a) {
    if (any_null(a)) return null_cell();
    if (r.width == 4) return real_cell(std::atan2(static_cast<float>(a[0].d), static_cast<float>(a[1].d)));
    return real_cell(std::atan2(a[0].number(), a[1].number()));
}
cell round2(const type_info& r, types_of t, cells a) {
    if (any_null(a)) return null_cell();
    long long digits = 0;
    if (!t[1]->is_real) {
        digits = static_cast<long long>(a[1].i);
    } else if (std::fabs(a[1].d) < 9e18) {
        digits = static_cast<long long>(a[1].d);
    }
    const double p = std::pow(10.0, static_cast<signed char>(digits));
    const double x = a[0].number();
    const double rounded = std::copysign(std::floor(std::fabs(x) * p + 0.5) / p, x);
    return r.is_real ? as_real(r, rounded) : real_to_integer(r, rounded);
}

cell negate(const type_info& r, types_of, cells a) {
    if (a[0].null) return null_cell();
    return r.is_real ? real_cell(-a[0].d) : wrapped(r, -a[0].i);
}
cell abs_(const type_info& r, types_of, cells a) {
    if (a[0].null) return null_cell();
    return r.is_real ? real_cell(std::fabs(a[0].d)) : wrapped(r, a[0].i < 0 ? -a[0].i : a[0].i);
}
cell sign(const type_info& r, types_of, cells a) {
    if (a[0].null) return null_cell();
    const double x = a[0].number();
    return wrapped(r, (x > 0) - (x < 0));
}
template <double (*Function)(double), float (*Narrow)(float)>
cell real_function(const type_info& r, types_of, cells a) {
    if (a[0].null) return null_cell();
    if (!r.is_real) return wrapped(r, a[0].i);  // rounding an integer
    return r.width == 4 ? real_cell(Narrow(static_cast<float>(a[0].number()))) : real_cell(Function(a[0].number()));
}
double cot_of(double x) {
    return 1.0 / std::tan(x);
}
float cot_of(float x) {
    return 1.0f / std::tan(x);
}

cell logarithm(const type_info& r, types_of t, cells a) {
    if (a.size() == 1) return real_function<std::log10, std::log10>(r, t, a);
    if (any_null(a)) return null_cell();
    const double x = a[0].number();
    const double base = a[1].number();
    if (!(x > 0 && base > 0 && base != 1)) return null_cell();
    if (base == 2) return real_cell(std::log2(x));
    return real_cell(base == 10 ? std::log10(x) : std::log(x) / std::log(base));
}

// The sign of a comparison; 2 when the two are unordered.
int order(types_of t, cells a) {
    if (t[0]->is_real || t[1]->is_real) {
        const double x = a[0].number();
        const double y = a[1].number();
        if (std::isnan(x) || std::isnan(y)) return 2;
        return (x > y) - (x < y);
    }
    __int128 x = a[0].i;
    __int128 y = a[1].i;
    constexpr __int128 day = 864000000;
    if (t[0]->name == L"date" && t[1]->name == L"datetime") x *= day;
    if (t[1]->name == L"date" && t[0]->name == L"datetime") y *= day;
    // A moment and a duration compare as signed counts.
    if (t[0]->name == L"datetime" && t[1]->name == L"duration") x = static_cast<long long>(x);
    if (t[1]->name == L"datetime" && t[0]->name == L"duration") y = static_cast<long long>(y);
    return (x > y) - (x < y);
}
cell eq(const type_info&, types_of t, cells a) {
    return any_null(a) ? null_cell() : truth(order(t, a) == 0);
}
cell ne(const type_info&, types_of t, cells a) {
    return any_null(a) ? null_cell() : truth(order(t, a) != 0);
}
cell lt(const type_info&, types_of t, cells a) {
    return any_null(a) ? null_cell() : truth(order(t, a) == -1);
}
cell gt(const type_info&, types_of t, cells a) {
    return any_null(a) ? null_cell() : truth(order(t, a) == 1);
}
cell le(const type_info&, types_of t, cells a) {
    const int o = any_null(a) ? 0 : order(t, a);
    return any_null(a) ? null_cell() : truth(o == -1 || o == 0);
}
cell ge(const type_info&, types_of t, cells a) {
    const int o = any_null(a) ? 0 : order(t, a);
    return any_null(a) ? null_cell() : truth(o == 1 || o == 0);
}
bool distinct(types_of t, cells a) {
    if (any_null(a)) return a[0].null != a[1].null;
    const bool both_nan = a[0].real && a[1].real && std::isnan(a[0].d) && std::isnan(a[1].d);
    return !both_nan && order(t, a) != 0;
}
cell isdistinct(const type_info&, types_of t, cells a) {
    return truth(distinct(t, a));
}
cell isnotdistinct(const type_info&, types_of t, cells a) {
    return truth(!distinct(t, a));
}
cell isnull(const type_info&, types_of, cells a) {
    return truth(a[0].null);
}
cell isnotnull(const type_info&, types_of, cells a) {
    return truth(!a[0].null);
}

cell and_(const type_info&, types_of, cells a) {
    if ((!a[0].null && a[0].i == 0) || (!a[1].null && a[1].i == 0)) return truth(false);
    return any_null(a) ? null_cell() : truth(true);
}
cell or_(const type_info&, types_of, cells a) {
    if ((!a[0].null && a[0].i == 1) || (!a[1].null && a[1].i == 1)) return truth(true);
    return any_null(a) ? null_cell() : truth(false);
}
cell not_(const type_info&, types_of, cells a) {
    return a[0].null ? null_cell() : truth(a[0].i == 0);
}
cell copy(const type_info&, types_of, cells a) {
    return a[0];
}
cell iif(const type_info&, types_of, cells a) {
    return !a[0].null && a[0].i == 1 ? a[1] : a[2];
}

cell convert(const type_info& r, types_of t, cells a) {
    if (a[0].null) return null_cell();
    if (r.name == L"bit") return truth(a[0].number() != 0);
    if (r.is_real) return real_cell(r.width == 4 ? as_float(a[0]) : a[0].number());
    if (t[0]->is_real) return real_to_integer(r, a[0].d);
    const cell result = wrapped(r, a[0].i);
    return result.i == a[0].i ? result : null_cell();
}

cell winner(const type_info& r, types_of t, cells a, bool greatest) {
    if (any_null(a)) return null_cell();
    cell values[2];
    for (unsigned i = 0; i < 2; ++i) {
        if (t[i]->name == L"date" && r.name == L"datetime") {
            values[i] = a[i].i < (__int128{1} << 31) ? wrapped(r, a[i].i * 864000000) : null_cell();
        } else {
            values[i] = r.is_real ? real_cell(a[i].number()) : wrapped(r, a[i].i);
        }
    }
    if (values[0].null || values[1].null) return null_cell();  // a date beyond the range of datetime
    const auto below = [](const cell& x, const cell& y) {
        if (!x.real) return x.i < y.i;
        return x.d < y.d || (std::isnan(y.d) && !std::isnan(x.d));
    };
    const bool second = greatest ? below(values[0], values[1]) : below(values[1], values[0]);
    return values[second];
}
cell greatest(const type_info& r, types_of t, cells a) {
    return winner(r, t, a, true);
}
cell least(const type_info& r, types_of t, cells a) {
    return winner(r, t, a, false);
}

cell pageoffset(const type_info& r, types_of, cells a) {
    if (any_null(a)) return null_cell();
    const unsigned mask = (1u << (static_cast<unsigned>(a[1].i) % 32)) - 1;
    return wrapped(r, a[0].i & mask);
}
cell cluster(const type_info& r, types_of t, cells a) {
    if (any_null(a)) return null_cell();
    const unsigned shift = static_cast<unsigned>(a[1].i) % 32;
    const unsigned mask = (1u << (static_cast<unsigned>(a[2].i) % 32)) - 1;
    static_cast<void>(t);
    return wrapped(r, (a[0].i >> shift) & mask);
}

// The bits of a value, extended by its own sign.
unsigned long long bits_of(const type_info& type, const cell& value) {
    if (value.null) return null_bits(type);
    if (!value.real) return static_cast<unsigned long long>(static_cast<long long>(value.i));
    if (type.width == 4) return std::bit_cast<unsigned>(static_cast<float>(value.d));
    return std::bit_cast<unsigned long long>(value.d);
}
unsigned long long mixed64(unsigned long long k) {
    k = (k << 18) + ~k;
    k = (k ^ (k >> 31)) * 21;
    k = (k ^ (k >> 11)) * 65;
    return (k ^ (k >> 22)) & 0xFFFFFFFF;
}
unsigned hash_of(const type_info& type, const cell& value) {
    const unsigned long long bits = bits_of(type, value);
    if (type.width == 8) return static_cast<unsigned>(mixed64(bits));
    auto h = static_cast<unsigned>(bits);
    if (value.null && type.is_signed && type.width < 4) h = ~0u << (8 * type.width - 1);
    h = (h << 15) + ~h;
    h = (h ^ (h >> 12)) * 5;
    h = (h ^ (h >> 4)) * 2057;
    return h ^ (h >> 16);
}
cell hash(const type_info& r, types_of t, cells a) {
    return wrapped(r, hash_of(*t[0], a[0]));
}
cell rehash(const type_info& r, types_of t, cells a) {
    return wrapped(
        r, static_cast<__int128>(mixed64(hash_of(*t[0], a[0]) | static_cast<unsigned long long>(folded_before) << 32)));
}
cell radixhash(const type_info& r, types_of t, cells a) {
    const unsigned long long mask = ~0ULL >> (64 - 8 * t[0]->width);
    return wrapped(r, static_cast<__int128>(bits_of(*t[0], a[0]) & mask));
}
cell radixgrp(const type_info& r, types_of t, cells a) {
    return wrapped(r, radixhash(r, t, a).i | static_cast<__int128>(folded_before) << (8 * t[0]->width));
}

enum class scope { plain, numbers, comparable, no_text };

struct definition {
    row_reference row;
    scope over = scope::plain;
};

const std::map<std::wstring, definition>& definitions() {
    static const std::map<std::wstring, definition> table = {
        {L"plus", {plus, scope::numbers}},
        {L"minus", {minus, scope::numbers}},
        {L"times", {times, scope::numbers}},
        {L"divide", {divide, scope::numbers}},
        {L"div_", {div_}},
        {L"mod", {mod}},
        {L"power", {power}},
        {L"atan2", {atan2_}},
        {L"round2", {round2}},
        {L"negate", {negate}},
        {L"abs_", {abs_}},
        {L"sign", {sign}},
        {L"ceil", {real_function<std::ceil, std::ceil>}},
        {L"floor", {real_function<std::floor, std::floor>}},
        {L"round", {real_function<std::round, std::round>}},
        {L"acos", {real_function<std::acos, std::acos>}},
        {L"asin", {real_function<std::asin, std::asin>}},
        {L"atan", {real_function<std::atan, std::atan>}},
        {L"cos", {real_function<std::cos, std::cos>}},
        {L"cot", {real_function<cot_of, cot_of>}},
        {L"exp", {real_function<std::exp, std::exp>}},
        {L"ln", {real_function<std::log, std::log>}},
        {L"log", {logarithm}},
        {L"sin", {real_function<std::sin, std::sin>}},
        {L"sqrt", {real_function<std::sqrt, std::sqrt>}},
        {L"tan", {real_function<std::tan, std::tan>}},
        {L"eq", {eq, scope::comparable}},
        {L"ne", {ne, scope::comparable}},
        {L"lt", {lt, scope::comparable}},
        {L"le", {le, scope::comparable}},
        {L"gt", {gt, scope::comparable}},
        {L"ge", {ge, scope::comparable}},
        {L"isdistinct", {isdistinct, scope::comparable}},
        {L"isnotdistinct", {isnotdistinct, scope::comparable}},
        {L"isnull", {isnull}},
        {L"isnotnull", {isnotnull}},
        {L"and_", {and_}},
        {L"or_", {or_}},
        {L"not_", {not_}},
        {L"copy", {copy}},
        {L"iif", {iif}},
        {L"greatest", {greatest, scope::no_text}},
        {L"least", {least, scope::no_text}},
        {L"hash", {hash, scope::no_text}},
        {L"rehash", {rehash, scope::no_text}},
        {L"radixhash", {radixhash}},
        {L"radixgrp", {radixgrp}},
        {L"pageoffset", {pageoffset}},
        {L"cluster", {cluster}},
        {L"to_int", {convert, scope::numbers}},
        {L"to_real", {convert, scope::numbers}},
    };
    return table;
}

const std::wstring_view plain_names[] = {L"bit",  L"tiny", L"short", L"long",  L"bigint", L"uchr",
                                         L"usht", L"ulng", L"oid",   L"float", L"double"};

}  // namespace

row_reference reference_of(const std::wstring& operation, const std::vector<const type_info*>& types) {
    bool time = false;
    bool text = false;
    for (const type_info* type : types) {
        time |= is_time(type);
        text |= type->name.starts_with(L"usr");
    }
    const auto found = definitions().find(operation);
    if (found != definitions().end()) {
        if (time && found->second.over == scope::numbers) return date_reference_of(operation, types);
        // Tokens without a heap are plain numbers, but not to those that parse them.
        if (text && (found->second.over == scope::numbers || found->second.over == scope::no_text)) return nullptr;
        return found->second.row;
    }
    for (const std::wstring_view name : plain_names) {
        if (operation == name && !time && !text) return convert;
    }
    return date_reference_of(operation, types);
}

}  // namespace qve::test
