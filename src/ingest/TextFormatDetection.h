#pragma once

#include <cstddef>
#include <string_view>

#include "types/parse_config.h"
#include "types/usrprops.h"

namespace qve {

/// Each looks at the first bytes of a text and settles one point of its format, unless `given` says it. What is found
/// goes into `config` and, where it is not the default, into `found`.

/// Line feed, or carriage return in a text that has more than 5/4 of them. Throws QVE_LogicError 40561 "Text file has
/// no lines" when there is neither.
void DetermineRecordSeparator(std::string_view sample, const usrprops& given, parse_config& config, usrprops& found);

/// Takes a quote away that does not enclose fields, as an inch mark or an apostrophe does not, and the escape where
/// fields end in it.
void ValidateQuotes(std::string_view sample, const usrprops& given, parse_config& config, usrprops& found);

/// The character that comes the same number of times in each record. `sample` should hold whole records.
void DetermineFieldSeparator(std::string_view sample, const usrprops& given, parse_config& config, usrprops& found);

}  // namespace qve
