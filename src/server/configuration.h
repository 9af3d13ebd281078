#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string_view>

#include "types/usrprops.h"

namespace qve {

/// Reads `key:value` lines in UTF-8 up to the end of the stream. Lines that are empty, begin with "#", hold no ":" or
/// have an empty key or value are skipped; nothing is trimmed; a later line replaces an earlier one of the same key.
usrprops ReadConfiguration(std::istream& stream);

/// The number at the start of a text, after white space; 0 when there is none, the greatest when it does not fit.
std::uint64_t ReadUnsigned(std::wstring_view text);

/// The decimal digits after characters up to the blank, as a 32-bit number that wraps; nothing for a blank text.
std::optional<std::uint32_t> ScanDigits(std::wstring_view text);

/// How many threads queries may use.
struct ParallelismFigures {
    std::uint32_t maxConcurrency = 0;
    std::uint32_t degree = 0;
    std::uint32_t minimumDegree = 0;

    /// From the configuration; `base` stands for what is not there, `builtinMinimum` is the least degree by default.
    static ParallelismFigures Compute(const usrprops& configuration, std::uint32_t base, std::uint32_t builtinMinimum);
};

}  // namespace qve
