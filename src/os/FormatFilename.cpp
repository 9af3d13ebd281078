#include "os/FormatFilename.h"

#include <fmt/chrono.h>
#include <unistd.h>

#include <ctime>

namespace qve {

FormatFilename::FormatFilename(bool utc) {
    const std::time_t now = std::time(nullptr);
    const std::tm parts = utc ? fmt::gmtime(now) : fmt::localtime(now);
    const auto two = [](int number) { return fmt::format("{:02}", number); };
    m_tokens = {{'P', std::to_string(getpid())}, {'Y', std::to_string(parts.tm_year + 1900)},
                {'m', two(parts.tm_mon + 1)},    {'d', two(parts.tm_mday)},
                {'H', two(parts.tm_hour)},       {'M', two(parts.tm_min)},
                {'S', two(parts.tm_sec)},        {'%', "%"}};
}

std::string FormatFilename::format(std::string_view pattern) const {
    std::string name;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const auto token = pattern[i] == '%' && i + 1 < pattern.size() ? m_tokens.find(pattern[i + 1]) : m_tokens.end();
        if (token == m_tokens.end()) {
            name += pattern[i];
        } else {
            name += token->second;
            ++i;
        }
    }
    return name;
}

}  // namespace qve
