#pragma once

#include "types/datatraits.h"
#include "types/input_column.h"

namespace qve {

// How kernels read an argument: one view type for each storage mode, so that a constant costs no load and a row number
// no memory. Each has the atom type, the name of its mode, and `whole`, true when no value read through it is null.

/// One value per row.
template <class T>
struct col {
    using atom = T;
    static constexpr const wchar_t* storage = L"col";
    const T* data;
    bool whole;

    explicit col(const input_column& c) : data(c.values<T>()), whole(c.flags & column_flags::not_null) {}
    static bool fits(const input_column& c) { return c.width == sizeof(T); }
    [[gnu::always_inline]] T operator[](unsigned i) const { return data[i]; }
};

/// One value for all rows. The column must hold it, even where no row is asked for.
template <class T>
struct val {
    using atom = T;
    static constexpr const wchar_t* storage = L"val";
    T value;
    bool whole;

    explicit val(const input_column& c) : value(*c.values<T>()), whole(!is_null(value)) {}
    static bool fits(const input_column& c) { return c.width == sizeof(T); }
    [[gnu::always_inline]] T operator[](unsigned) const { return value; }
};

/// The row number itself; nothing is stored.
template <class T>
struct vir {
    using atom = T;
    static constexpr const wchar_t* storage = L"vir";
    static constexpr bool whole = true;

    explicit vir(const input_column&) {}
    static bool fits(const input_column&) { return true; }
    [[gnu::always_inline]] T operator[](unsigned i) const { return from_raw<T>(i); }
};

template <class View>
inline constexpr bool is_val = false;
template <class T>
inline constexpr bool is_val<val<T>> = true;

/// The same argument with row `base` as its row 0.
template <class T>
col<T> from(col<T> c, unsigned base) {
    c.data += base;
    return c;
}
template <class T>
val<T> from(val<T> v, unsigned) {
    return v;
}

}  // namespace qve
