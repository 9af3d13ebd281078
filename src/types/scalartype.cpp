#include "types/scalartype.h"

#include <cmath>
#include <cstring>
#include <istream>
#include <limits>
#include <sstream>

#include "types/atom_hash.h"
#include "types/atom_text.h"
#include "types/parse_value.h"
#include "types/selected_rows.h"

namespace qve {
namespace {

template <class T>
std::string_view null_image() {
    return {reinterpret_cast<const char*>(&datatraits<T>::null), sizeof(T)};
}

// -1, 0 or 1, null first. A NaN is neither below nor above anything.
template <class T>
int order(const T& left, const T& right) {
    if (is_null(left)) return is_null(right) ? 0 : -1;
    if (is_null(right)) return 1;
    if constexpr (std::is_same_v<T, bit>) {
        const auto a = static_cast<signed char>(left.value);
        const auto b = static_cast<signed char>(right.value);
        return (a > b) - (a < b);
    } else {
        return (left > right) - (left < right);
    }
}

template <class T>
const T* plain_values(input_column in) {
    const bool plain = !in.heap && in.width == sizeof(T) && reinterpret_cast<uintptr_t>(in.data) % alignof(T) == 0;
    return plain ? in.values<T>() : nullptr;
}

// A real truncated to an integer type; null when it does not fit.
template <class T>
T truncated(double value) {
    using raw_type = typename datatraits<T>::raw;
    const double whole = std::trunc(value);
    constexpr auto bits = std::numeric_limits<raw_type>::digits;
    const double above = std::ldexp(1.0, bits);
    const double lowest = std::is_signed_v<raw_type> ? -above : 0.0;
    if (!(whole >= lowest && whole < above)) return datatraits<T>::null;
    return from_raw<T>(static_cast<raw_type>(whole));
}

// Conversions that the text forms do not give. False when there is none.
template <class T>
bool direct(T& to, const usratom& from) {
    const DataType source = from.type()->GetDataType();
    if constexpr (std::is_same_v<T, date>) {
        if (source != DataType::datetime) return false;
        to = scalartype<datetime>::value(from).day();
        return true;
    } else if constexpr (std::is_arithmetic_v<T>) {
        if (source != DataType::boolean) return false;
        to = static_cast<T>(scalartype<bit>::value(from).value);
        return true;
    } else if constexpr (std::is_same_v<T, bit>) {
        if (source != DataType::integer && source != DataType::index && source != DataType::real) return false;
        usratom number;
        builtin::usrtypeof<double>()->cast(number, from);
        to = bit{static_cast<unsigned char>(scalartype<double>::value(number) != 0)};
        return true;
    } else {
        return false;
    }
}

// Reads the printed form of an atom as a T. False when the text does not end cleanly.
template <class T>
bool through_text(T& to, const usratom& from) {
    std::ostringstream printed;
    from.type()->tostream(printed, from);
    std::string text = printed.str();
    const bool quoted = !text.empty() && text.front() == '\'';
    if (quoted) text.erase(0, 1);
    std::istringstream stream(text);
    to = read_atom<T>(stream);
    if (stream.fail()) return false;
    if (quoted && stream.get() != '\'') return false;
    return stream.peek() == std::char_traits<char>::eof();
}

}  // namespace

template <class T>
scalartype<T>::scalartype(usrprops properties) : builtin(std::move(properties), null_image<T>()) {}

template <class T>
T scalartype<T>::value(const usratom& atom) {
    T value = datatraits<T>::null;
    if (atom.data() && atom.length() == sizeof(T)) std::memcpy(&value, atom.data(), sizeof(T));
    return value;
}

template <class T>
void scalartype<T>::store(usratom& atom, T value) const {
    atom.assign(this, reinterpret_cast<const char*>(&value), sizeof value);
}

template <class T>
bool scalartype<T>::frombuffer(usratom& atom, unsigned begin, unsigned end, const char* buffer) const {
    T value;
    const bool failed = parse_value(value, begin, end, buffer, parse_config::standard());
    store(atom, value);
    return failed;
}

template <class T>
std::istream& scalartype<T>::fromstream(std::istream& stream, usratom& atom) const {
    store(atom, read_atom<T>(stream));
    return stream;
}

template <class T>
std::ostream& scalartype<T>::tostream(std::ostream& stream, const usratom& atom) const {
    return print_atom(stream, value(atom));
}

template <class T>
bool scalartype<T>::validate(const usratom& atom) const {
    return atom.type() == this && (!atom.data() || atom.length() == sizeof(T));
}

template <class T>
void scalartype<T>::cast(usratom& to, const usratom& from) const {
    if (from.isnull()) return to.assign_null(this);
    if (from.type() == this) {
        to = from;
        return;
    }
    T value = datatraits<T>::null;
    if (!direct(value, from) && !through_text(value, from)) {
        value = datatraits<T>::null;
        if constexpr (std::is_integral_v<T>) {
            const DataType source = from.type()->GetDataType();
            if (source != DataType::integer && source != DataType::index) {
                usratom real;
                builtin::usrtypeof<double>()->cast(real, from);
                const double number = scalartype<double>::value(real);
                if (!is_null(number)) value = truncated<T>(number);
            }
        }
    }
    store(to, value);
}

template <class T>
unsigned scalartype<T>::hash(const usratom& atom) const {
    return atom_hash(value(atom));
}

template <class T>
void scalartype<T>::hash(unsigned count, output_column out, input_column in, const unsigned* selection) const {
    const T* values = plain_values<T>(in);
    if (!values) return usrtype::hash(count, out, in, selection);
    auto* hashes = out.values<unsigned>();
    for_selected(count, selection, [=](unsigned row) { hashes[row] = atom_hash(values[row]); });
}

template <class T>
int scalartype<T>::compare(const usratom& left, const usratom& right) const {
    if (left.data() == right.data()) return 0;
    if (!left.data()) return -1;
    if (!right.data()) return 1;
    return order(value(left), value(right));
}

template <class T>
void scalartype<T>::compare(unsigned count, output_column out, input_column left, input_column right,
                            const unsigned* selection) const {
    const T* a = plain_values<T>(left);
    const T* b = plain_values<T>(right);
    if (!a || !b) return usrtype::compare(count, out, left, right, selection);
    auto* orders = out.values<char>();
    for_selected(count, selection, [=](unsigned row) { orders[row] = static_cast<char>(order(a[row], b[row])); });
}

template <class T>
void scalartype<T>::put(output_column column, unsigned long row, const usratom& atom) const {
    if (column.heap) return usrtype::put(column, row, atom);
    if (column.width != sizeof(T)) return;
    T stored;
    if (atom.type() == this || atom.isnull()) {
        stored = value(atom);
    } else {
        usratom converted;
        cast(converted, atom);
        stored = value(converted);
    }
    std::memcpy(column.values<char>() + row * sizeof(T), &stored, sizeof(T));
}

template <class T>
void scalartype<T>::get(input_column column, unsigned long row, usratom& atom) const {
    if (column.heap) return usrtype::get(column, row, atom);
    if (column.width != sizeof(T)) return atom.assign_null(this);
    atom.assign(this, column.values<char>() + row * sizeof(T), sizeof(T), true);
}

template <class T>
usratom scalartype<T>::null() const {
    return usratom(this, null_bytes().data(), null_bytes().size());
}

template class scalartype<bit>;
template class scalartype<char>;
template class scalartype<short>;
template class scalartype<int>;
template class scalartype<long long>;
template class scalartype<unsigned char>;
template class scalartype<unsigned short>;
template class scalartype<unsigned int>;
template class scalartype<unsigned long long>;
template class scalartype<float>;
template class scalartype<double>;
template class scalartype<date>;
template class scalartype<datetime>;
template class scalartype<duration>;

}  // namespace qve
