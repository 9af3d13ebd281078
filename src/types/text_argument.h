#pragma once

#include <string>
#include <string_view>

#include "types/usratom.h"

namespace qve {

/// What collations do with their arguments and results.

/// No function makes a text of more bytes than this; where it would, there is no answer.
inline constexpr size_t longest_text = size_t{1} << 26;

/// Throws QVE_InvalidArgument (status::collation_null_argument) with `message` for an atom without data.
void require_text(const usratom& text, const char* message);

/// Makes `result` a text of its own type, or of `fallback` when it has none, from bytes of units of `width` bytes or
/// from UTF-16.
void assign_text(usratom& result, const usrtype* fallback, std::string_view text, unsigned width);
void assign_text(usratom& result, const usrtype* fallback, std::u16string_view text);

/// Case mapping of ASCII text in a one-byte scale without any Unicode machinery. False when the text is something else;
/// the result is unchanged then.
bool upper_ascii(const usratom& text, usratom& result);
bool lower_ascii(const usratom& text, usratom& result);

}  // namespace qve
