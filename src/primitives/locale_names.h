#pragma once

#include <string>
#include <vector>

namespace qve {

class usrtype;

/// What a locale calls the months and the days of the week, in UTF-8.
struct locale_names {
    std::vector<std::string> months;  ///< January first
    std::vector<std::string> days;    ///< Sunday first

    /// The names for results of a text type: in the locale of its collation, and for the binary collation in that of
    /// the process, which is English where the environment names none. Made once for each locale; any thread.
    static const locale_names& of(const usrtype* type);
};

}  // namespace qve
