#pragma once

#include <optional>
#include <string_view>

namespace qve {

/// Numbers as they are written in statements. The process's locale has no say in it.

/// A whole text as an integer of 64 bits: an optional sign and decimal digits. Nothing when it is anything else or does
/// not fit.
std::optional<long long> ParseInteger(std::wstring_view text);
/// A whole text as a floating-point number, decimal or hexadecimal ("0x1p4"); one beyond the range is infinite or zero.
std::optional<double> ParseDouble(std::wstring_view text);

}  // namespace qve
