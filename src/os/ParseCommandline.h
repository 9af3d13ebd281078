#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qve {

/// Splits a command line into arguments at blanks. Double quote marks hold blanks together; within them a doubled quote
/// mark stands for one. A quote mark that is never closed holds the rest.
class ParseCommandline {
public:
    static std::vector<std::string> Parse(std::string_view text);
    static std::vector<std::wstring> Parse(std::wstring_view text);
};

}  // namespace qve
