#pragma once

#include <array>
#include <span>
#include <tuple>
#include <type_traits>

#include "primitives/registration.h"
#include "primitives/signatures.h"
#include "primitives/views.h"

namespace qve {

/// The storage modes of the arguments of one kernel, as in mode<col, val>.
template <template <class> class... View>
struct mode {};
template <class... M>
struct modes {};

using modes0 = modes<mode<>>;
using modes1 = modes<mode<col>, mode<val>>;
using modes2 = modes<mode<col, col>, mode<col, val>, mode<val, col>, mode<val, val>>;

template <class T>
inline constexpr const wchar_t* type_name = datatraits<T>::name.data();

namespace detail {

template <class Op, class T>
constexpr auto kernel_atom_of() {
    if constexpr (requires { typename Op::template kernel_atom<T>; }) {
        return std::type_identity<typename Op::template kernel_atom<T>>();
    } else {
        return std::type_identity<T>();
    }
}

template <class Maker, class Sig, class... M, class Entries>
constexpr void fill(Sig signature, modes<M...>, Entries& entries, size_t& next) {
    ((entries[next++] = Maker::entry(signature, M())), ...);
}

template <class Maker, class... S, class... M>
constexpr auto make_table(signatures<S...>, modes<M...> list) {
    using first = std::tuple_element_t<0, std::tuple<S...>>;
    using first_mode = std::tuple_element_t<0, std::tuple<M...>>;
    std::array<decltype(Maker::entry(first(), first_mode())), sizeof...(S) * sizeof...(M)> entries{};
    size_t next = 0;
    (fill<Maker>(S(), list, entries, next), ...);
    return entries;
}

}  // namespace detail

/// The type for which a kernel of Op over T is compiled: Op::kernel_atom<T> when Op says so, else T. Registered is
/// always T.
template <class Op, class T>
using kernel_atom = typename decltype(detail::kernel_atom_of<Op, T>())::type;

/// The entries of a list of signatures, each in all modes. Maker::entry(sig, mode) makes one.
template <class Maker, class Sigs, class Modes>
inline constexpr auto kernel_table = detail::make_table<Maker>(Sigs(), Modes());

template <class F, size_t N>
constexpr std::span<const kernel_entry<F>> kernel_span(const std::array<kernel_entry<F>, N>& entries) {
    return entries;
}

}  // namespace qve
