#pragma once

#include <type_traits>

#include "primitives/arithmetic.h"
#include "primitives/select_kernel.h"
#include "primitives/text_comparison.h"

namespace qve {

// What all comparisons share: for which types they exist, and in which type two different ones compare.

namespace detail {

template <class A, class B>
constexpr auto common_of(A a, B b) {
    if constexpr (std::is_same_v<A, B>) {
        return a;
    } else if constexpr (std::is_floating_point_v<A> || std::is_floating_point_v<B>) {
        return static_cast<double>(a) + static_cast<double>(b);
    } else if constexpr (sizeof(A) >= sizeof(B)) {
        return a;
    } else {
        return b;
    }
}

// A date and a moment compare as ticks, a moment and a duration as counts. These are the only pairs of unlike kind.
template <class Other>
constexpr auto ticks(date d, Other) {
    return static_cast<unsigned long long>(d.value) * static_cast<unsigned long long>(ticks_per_day);
}
constexpr auto ticks(datetime t, date) {
    return t.value;
}
constexpr auto ticks(datetime t, duration) {
    return static_cast<long long>(t.value);
}
constexpr auto ticks(duration d, datetime) {
    return d.value;
}

}  // namespace detail

/// Calls compare(x, y) with the two values in a type that holds both.
template <class Compare, class A, class B>
[[gnu::always_inline]] inline constexpr auto compare_as_one(Compare compare, A a, B b) {
    if constexpr (std::is_same_v<A, B>) {
        return compare(raw(a), raw(b));
    } else if constexpr (is_time<A>) {
        return compare(detail::ticks(a, b), detail::ticks(b, a));
    } else {
        using common = decltype(detail::common_of(a, b));
        return compare(static_cast<common>(a), static_cast<common>(b));
    }
}

/// A comparison of two types, of which the result is a bit.
template <class A, class B>
using compare_sig = sig<bit, A, B>;
template <class T>
using compare_same_sig = sig<bit, T, T>;

namespace detail {

template <class... Sigs>
struct unlike;
template <>
struct unlike<> {
    using type = signatures<>;
};
template <class A, class B, class... More>
struct unlike<sig<bit, A, B>, More...> {
    using rest = typename unlike<More...>::type;
    using type =
        std::conditional_t<std::is_same_v<A, B>, rest, typename joined<signatures<sig<bit, A, B>>, rest>::type>;
};
template <class... Sigs>
typename unlike<Sigs...>::type unlike_of(signatures<Sigs...>);

}  // namespace detail

/// Pairs of one type, and pairs of two. Literals are brought to the type of the column that they are compared with, so
/// the former are what queries are made of.
using like_signatures = for_each_atom<compare_same_sig, plain_atoms>;
using unlike_signatures =
    decltype(detail::unlike_of(joined<for_each_pair<compare_sig, number_atoms>, for_each_pair<compare_sig, index_atoms>,
                                      signatures<sig<bit, date, datetime>, sig<bit, datetime, date>,
                                                 sig<bit, datetime, duration>, sig<bit, duration, datetime>>>()));
using comparable_text_signatures = for_each_pair<compare_sig, usr_atoms>;

/// The operation of a comparison Op, which has `name`, `equality` (true when it only asks whether two values are equal)
/// and `template <class T> static bool holds(T a, T b)` for numbers. A null compares to null.
template <class Op>
struct strict_comparison {
    static constexpr bool equality = Op::equality;

    template <class R, class A, class B>
    [[gnu::always_inline]] static bit apply(A a, B b) {
        return {static_cast<unsigned char>(
            compare_as_one([](auto x, auto y) [[gnu::always_inline]] { return Op::holds(x, y); }, a, b))};
    }
    static bit of_order(text_order order) {
        if (order >= one_null) return datatraits<bit>::null;
        return {static_cast<unsigned char>(Op::holds(static_cast<int>(order), 0))};
    }
};

/// The operation of a comparison to which null is a value like any other. Op has `equality` and `holds(bool distinct)`.
/// Two NaN are not distinct, as sorted groups need it.
template <class Op>
struct null_comparison {
    static constexpr bool equality = true;
    static constexpr null_rule nulls = null_rule::own;
    static constexpr bool never_null = true;

    template <class R, class A, class B>
    [[gnu::always_inline]] static bit apply(A a, B b) {
        const bool a_null = is_null(a);
        const bool b_null = is_null(b);
        const bool differ = compare_as_one(
            [](auto x, auto y) [[gnu::always_inline]] {
                if constexpr (std::is_floating_point_v<decltype(x)>) {
                    return !((x == y) | ((x != x) & (y != y)));
                } else {
                    return x != y;
                }
            },
            a, b);
        const bool distinct = (a_null != b_null) | (differ & !a_null);
        return {static_cast<unsigned char>(Op::holds(distinct))};
    }
    static bit of_order(text_order order) {
        return {static_cast<unsigned char>(Op::holds(order != text_equal && order != both_null))};
    }
};

/// With dense loops for the wider vector units. They double what has to be compiled, so only for pairs of one type.
template <class Rule>
struct vectorised_comparison : Rule {
    static constexpr bool vectorised = true;
};

/// Registers a comparison as map and as select over all comparable types and over text.
template <class Op, template <class> class Rule>
class register_comparison : public registration {
public:
    register_comparison() {
        using rule = Rule<Op>;
        using wide = vectorised_comparison<rule>;
        add(primitive::klassMap, Op::name, kernel_span(kernel_table<map_maker<wide>, like_signatures, modes2>));
        add(primitive::klassMap, Op::name, kernel_span(kernel_table<map_maker<rule>, unlike_signatures, modes2>));
        add(primitive::klassMap, Op::name,
            kernel_span(kernel_table<text_map_maker<rule>, comparable_text_signatures, modes2>));
        add(primitive::klassSelect, Op::name, kernel_span(kernel_table<select_maker<wide>, like_signatures, modes2>));
        add(primitive::klassSelect, Op::name, kernel_span(kernel_table<select_maker<rule>, unlike_signatures, modes2>));
        add(primitive::klassSelect, Op::name,
            kernel_span(kernel_table<text_select_maker<rule>, comparable_text_signatures, modes2>));
    }
};

}  // namespace qve
