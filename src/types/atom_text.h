#pragma once

#include <iosfwd>

#include "types/datatraits.h"

namespace qve {

/// The text form of a single atom, the same under every locale: "t" and "f" of a bit (or the number of a stored byte
/// above 1), numbers in decimal, floating point with 9 or 17 significant digits, so that it reads back exactly. "NULL"
/// for a null.
template <class T>
std::ostream& print_atom(std::ostream& stream, const T& value);

/// Reads that form, as far as it goes, and leaves the rest in the stream. A null is recognised as
/// usrtype::nullfromstream does; anything else that is no such value fails the stream and gives null.
template <class T>
T read_atom(std::istream& stream);

}  // namespace qve
