#pragma once

#include <string>
#include <string_view>

#include "vql/syntax/VQLDataValue.h"

namespace qve {

/// A value as it stands in a statement; any null is "null".
std::wstring FormatDataValue(const VQLDataValue& value);
/// A text as a string literal.
std::wstring FormatString(std::wstring_view text);

}  // namespace qve
