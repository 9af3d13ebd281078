#pragma once

#include <map>
#include <string>
#include <string_view>

namespace qve {

/// Fills patterns for file names with the process and the moment of construction: "%P" the process id, "%Y" the year,
/// "%m" the month, "%d" the day, "%H", "%M", "%S" the time, all but the first two of two digits, and "%%" a percent
/// sign.
class FormatFilename {
public:
    /// In universal or local time.
    explicit FormatFilename(bool utc);
    /// An unknown token is copied as it stands.
    std::string format(std::string_view pattern) const;

private:
    std::map<char, std::string> m_tokens;
};

}  // namespace qve
