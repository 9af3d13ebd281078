#pragma once

#include "types/parse_config.h"
#include "types/usrprops.h"

namespace qve {

/// Takes what text properties say over into a format; what they do not mention stays. A character is an ASCII character
/// or a backslash and a letter of parse_config::unescaped; an empty text means that there is none; anything else leaves
/// the character as it is.
void GetConfigFromTextProps(parse_config& config, const usrprops& properties);

/// Writes a character in that form; one of 127 or above removes the property.
void SetTextPropFromConfig(usrprops& properties, usrpropkey key, char value);

/// The order of the parts of a date in three letters, as "ymd".
std::wstring date_order(const parse_config& config);

}  // namespace qve
