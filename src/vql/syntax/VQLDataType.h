#pragma once

#include <string>

#include "types/usrprops.h"

namespace qve {

/// The type of an expression or column as the language sees it. The order is part of its meaning: values of
/// different types compare by it.
enum class VQLDataType { unknown, integer, double_, boolean, string, date, datetime, duration, spatial };

/// "unknown", "integer", "double", "boolean", "string", "date", "datetime", "duration"; "<invalid>" for anything else.
const std::wstring& FormatDataType(VQLDataType type);

/// The language's type of the stored type that `props` describe: both kinds of stored integers are integers, a type
/// that the language cannot handle is unknown. Throws what usrtype::resolve throws.
VQLDataType VQLDataTypeFromProps(const usrprops& props);

}  // namespace qve
