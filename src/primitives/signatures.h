#pragma once

#include <type_traits>

#include "types/datatraits.h"

namespace qve {

/// For which types an operation exists: the result, then the arguments.
template <class R, class... Args>
struct sig {};

/// A list of sig.
template <class... Sigs>
struct signatures {};

/// A list of atom types.
template <class... T>
struct atoms {};

using signed_atoms = atoms<tiny, short, int, bigint>;
using float_atoms = atoms<float, double>;
using number_atoms = atoms<tiny, short, int, bigint, float, double>;
using index_atoms = atoms<uchr, usht, ulng, oid>;
using time_atoms = atoms<date, datetime, duration>;
using usr_atoms = atoms<usr1, usr2, usr4, usr8>;
/// Everything that holds its value in itself.
using plain_atoms =
    atoms<bit, tiny, short, int, bigint, uchr, usht, ulng, oid, float, double, date, datetime, duration>;
using all_atoms = atoms<bit, tiny, short, int, bigint, uchr, usht, ulng, oid, float, double, date, datetime, duration,
                        usr1, usr2, usr4, usr8>;

namespace detail {

template <class... Lists>
struct joined;
template <template <class...> class List, class... A>
struct joined<List<A...>> {
    using type = List<A...>;
};
template <template <class...> class List, class... A, class... B, class... More>
struct joined<List<A...>, List<B...>, More...> {
    using type = typename joined<List<A..., B...>, More...>::type;
};

template <template <class...> class Sig, class List>
struct each;
template <template <class...> class Sig, class... T>
struct each<Sig, atoms<T...>> {
    using type = signatures<Sig<T>...>;
};

template <template <class, class> class Sig, class Left, class Right>
struct crossed;
template <template <class, class> class Sig, class... A, class Right>
struct crossed<Sig, atoms<A...>, Right> {
    template <class One, class... B>
    static signatures<Sig<One, B>...> row(atoms<B...>);
    using type = typename joined<signatures<>, decltype(row<A>(Right()))...>::type;
};

template <template <class, class, class> class Sig, class Left, class Middle, class Right>
struct crossed3;
template <template <class, class, class> class Sig, class... A, class Middle, class Right>
struct crossed3<Sig, atoms<A...>, Middle, Right> {
    template <class One>
    struct with {
        template <class B, class C>
        using sig = Sig<One, B, C>;
    };
    using type = typename joined<signatures<>, typename crossed<with<A>::template sig, Middle, Right>::type...>::type;
};

template <size_t Width>
struct unsigned_of_width;
template <>
struct unsigned_of_width<1> {
    using type = uchr;
};
template <>
struct unsigned_of_width<2> {
    using type = usht;
};
template <>
struct unsigned_of_width<4> {
    using type = ulng;
};
template <>
struct unsigned_of_width<8> {
    using type = oid;
};

template <class T>
struct equivalent {
    using type = T;
};
template <>
struct equivalent<date> {
    using type = ulng;
};
template <>
struct equivalent<datetime> {
    using type = oid;
};
template <>
struct equivalent<duration> {
    using type = bigint;
};
template <class T>
struct equivalent<usr<T>> {
    using type = T;
};

}  // namespace detail

/// Several lists as one.
template <class... Lists>
using joined = typename detail::joined<Lists...>::type;
/// Sig<T> for each T of a list.
template <template <class...> class Sig, class List>
using for_each_atom = typename detail::each<Sig, List>::type;
/// Sig<A, B> for each pair of two lists.
template <template <class, class> class Sig, class Left, class Right = Left>
using for_each_pair = typename detail::crossed<Sig, Left, Right>::type;

/// Sig<A, B, C> for each triple of three lists.
template <template <class, class, class> class Sig, class Left, class Middle, class Right>
using for_each_triple = typename detail::crossed3<Sig, Left, Middle, Right>::type;

/// The unsigned atom as wide as T.
template <class T>
using unsigned_of = typename detail::unsigned_of_width<sizeof(T)>::type;
/// The plain number that has the values, the order and the null of T: kernels that need no more of a type are compiled
/// once for all that share it.
template <class T>
using equivalent = typename detail::equivalent<T>::type;

template <class T>
inline constexpr bool is_usr = false;
template <class T>
inline constexpr bool is_usr<usr<T>> = true;

/// The type to compute R in, so that integers wrap: unsigned and at least as wide as int.
template <class R>
using wrapping = std::conditional_t<std::is_floating_point_v<typename datatraits<R>::raw>, typename datatraits<R>::raw,
                                    std::conditional_t<sizeof(R) == 8, unsigned long long, unsigned>>;

}  // namespace qve
