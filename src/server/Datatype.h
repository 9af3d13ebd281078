#pragma once

#include <cstdint>
#include <string>

#include "types/usrprops.h"

namespace qve::Server {

/// The wire type of a column with these properties; 0 for a builtin type that the wire does not know. Throws
/// QVE_RangeError (40416, 40417, "missing type information").
std::uint32_t GetDatatype(const usrprops& properties);

/// Text between double quote marks, with a backslash before each double quote mark and each backslash; "NULL" for a
/// null pointer. The form of texts in the log.
std::string QuoteStringLiteral(const char16_t* text);

}  // namespace qve::Server
