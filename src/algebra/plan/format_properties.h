#pragma once

#include <string>

#include "types/usrprops.h"

namespace qve {

/// A property set as the list "((\"key\" \"value\") ...)", in a fixed order.
std::wstring format_properties(const usrprops& properties);

}  // namespace qve
