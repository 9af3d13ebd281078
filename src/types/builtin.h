#pragma once

#include <string_view>

#include "types/usrtype.h"

namespace qve {

/// The base of the fourteen atom types.
class builtin : public usrtype {
public:
    /// Makes the atom types known; called by types_initialization.
    static void register_types();
    /// The factory of the property `builtin`.
    static typefactory& builtin_factory();

    /// The type of a value type: bit, char, short, int, long long, the unsigned integers, float, double, date,
    /// datetime, duration.
    template <class T>
    static const usrtype* usrtypeof();
    /// The atom type of a name, as in "bigint". Throws QVE_RangeError 40689 for another name.
    static const usrtype* primitive_type(std::wstring_view name);
    /// The properties of that type.
    static const usrprops& primitive_props(std::wstring_view name);

protected:
    using usrtype::usrtype;
};

template <class T>
const usrtype* builtin::usrtypeof() {
    static const usrtype* const type = primitive_type(datatraits<T>::name);
    return type;
}

}  // namespace qve
