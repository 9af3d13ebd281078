#pragma once

#include <limits>
#include <span>

#include "primitives/conversion.h"
#include "primitives/kernel_table.h"
#include "types/collation.h"
#include "types/usratom.h"

namespace qve {

/// What a function of texts sees of one row. No text is null.
struct text_call {
    /// Of a result that is no answer, and of a number argument that is null.
    static constexpr long long null = std::numeric_limits<long long>::min();

    const collation* order;  ///< of the first text
    const usratom* text[3];  ///< the texts, in the order of the arguments
    long long number;        ///< the number argument; its fraction is cut off
    usratom result;          ///< of a function whose result is a text: of the type of the output's heap
};

/// Computes one row. Gives the number or the truth value, anything for a text, or text_call::null.
using text_operation = long long (*)(text_call& call);

/// What the results of a function are: texts, "long" integers, truth values, the counts of a "datetime".
enum class text_kind { text, integer, truth, moment };

/// Reads row `i` of a number argument.
using number_reader = long long (*)(const void* data, unsigned i);

/// One argument: a number when there is a reader, else a text.
struct text_input {
    input_column column;
    bool constant;
    number_reader reader;
};

/// Computes a function of texts for each row. A null argument gives a null. Equal arguments in near rows are computed
/// once.
unsigned map_text(unsigned n, output_column out, std::span<const text_input> inputs, unsigned const* sel,
                  text_operation operation, text_kind kind);
/// The positions of the rows for which a function with truth values holds.
unsigned select_text(unsigned n, output_column out, std::span<const text_input> inputs, unsigned const* sel,
                     text_operation operation);

template <class T>
long long read_number(const void* data, unsigned i) {
    const T value = static_cast<const T*>(data)[i];
    return is_null(value) ? text_call::null : converted<bigint>(value);
}

/// An argument of type T in a storage mode, as a text or as a number.
template <class T, template <class> class View>
struct text_argument_of {
    static text_input input(const input_column& column) {
        number_reader reader = nullptr;
        if constexpr (!is_usr<T>) reader = &read_number<T>;
        return {column, is_val<View<T>>, reader};
    }
};

/// The kernels of a function: `name`, `kind` and `static long long apply(text_call&)`.
template <class Function, class... Argument>
struct text_function_kernel {
    template <class>
    using input = input_column;

    static unsigned map(unsigned n, output_column out, input<Argument>... columns, unsigned const* sel) {
        const text_input inputs[] = {Argument::input(columns)...};
        return map_text(n, out, inputs, sel, Function::apply, Function::kind);
    }
    static unsigned select(unsigned n, output_column out, input<Argument>... columns, unsigned const* sel) {
        const text_input inputs[] = {Argument::input(columns)...};
        return select_text(n, out, inputs, sel, Function::apply);
    }
};

namespace detail {

// Tokens are read by their width, so one kernel serves all.
template <class T>
using any_token = std::conditional_t<is_usr<T>, usr1, T>;

}  // namespace detail

template <class Function>
struct text_function_map {
    template <class R, class... A, template <class> class... View>
    static constexpr auto entry(sig<R, A...>, mode<View...>) {
        using kernel = text_function_kernel<Function, text_argument_of<detail::any_token<A>, View>...>;
        return kernel_entry<decltype(&kernel::map)>{
            &kernel::map, type_name<R>, {type_name<A>...}, {View<A>::storage...}};
    }
};
template <class Function>
struct text_function_select {
    template <class R, class... A, template <class> class... View>
    static constexpr auto entry(sig<R, A...>, mode<View...>) {
        using kernel = text_function_kernel<Function, text_argument_of<detail::any_token<A>, View>...>;
        return kernel_entry<decltype(&kernel::select)>{
            &kernel::select, L"ulng", {type_name<A>...}, {View<A>::storage...}};
    }
};

/// Registers a function over its signatures; of one with truth values also the selects.
template <class Function, class Sigs, class Modes>
class register_text_function : public registration {
public:
    register_text_function() {
        add(primitive::klassMap, Function::name, kernel_span(kernel_table<text_function_map<Function>, Sigs, Modes>));
        if constexpr (Function::kind == text_kind::truth) {
            add(primitive::klassSelect, Function::name,
                kernel_span(kernel_table<text_function_select<Function>, Sigs, Modes>));
        }
    }
};

// Signatures by result.
template <class T>
using text_of_text = sig<usr4, T>;
template <class T>
using integer_of_text = sig<int, T>;
template <class A, class B>
using text_of_two = sig<usr4, A, B>;
template <class A, class B>
using integer_of_two = sig<int, A, B>;
template <class A, class B>
using truth_of_two = sig<bit, A, B>;
template <class A, class B>
using moment_of_two = sig<datetime, A, B>;
template <class A, class B, class C>
using text_of_three = sig<usr4, A, B, C>;

using modes3 = modes<mode<col, col, col>, mode<col, col, val>, mode<col, val, col>, mode<col, val, val>,
                     mode<val, col, col>, mode<val, col, val>, mode<val, val, col>, mode<val, val, val>>;

}  // namespace qve
