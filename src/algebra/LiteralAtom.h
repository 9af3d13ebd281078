#pragma once

#include "types/usratom.h"
#include "types/usrprops.h"

namespace qve {

class VQLDataValue;
enum class VQLDataType;

/// The value of a literal as the engine holds it: an integer as "bigint", text as UTF-8 of just its length with the
/// collation of `properties`. A null of unknown type gives a null of no type.
usratom AtomOfLiteral(const VQLDataValue& literal, const usrprops& properties);

/// The literal of a value: one that AtomOfLiteral makes a value of equal meaning of, maybe of a wider type. A null of
/// unknown type where the language has no literal for it.
VQLDataValue LiteralOfAtom(const usratom& atom);

/// The widest engine type of a language type, which is what a conversion to that type gives; null for unknown.
const usrtype* TypeOfDataType(VQLDataType type, const usrprops& properties);

}  // namespace qve
