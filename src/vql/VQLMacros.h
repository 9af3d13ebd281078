#pragma once

#include <map>
#include <string>

namespace qve {

/// A function given as VQL text, in which %1, %2, ... stand for the arguments.
struct VQLMacro {
    std::wstring text;
    unsigned argumentCount = 0;
};

using VQLMacroMap = std::map<std::wstring, VQLMacro, std::less<>>;

/// The macros of the language. A macro takes precedence over a function of the same name.
struct VQLMacros {
    /// The fixed texts; those of "now", "today" and "utc" are placeholders.
    static const VQLMacroMap s_singleton;
};

/// A copy in which "now", "today" and "utc" give the present moment, taken once.
VQLMacroMap GetVQLMacros();

}  // namespace qve
