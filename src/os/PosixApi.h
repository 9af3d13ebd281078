#pragma once

#include <string_view>

namespace qve {

/// How failures of the system become exceptions.
class PosixApi {
public:
    /// 100 for a full disk, 101 for a quota, 102 for memory, 103 for too many open files; `fallback` for the rest.
    static int MapGeneralOSErrorToQveStatus(int error, int fallback);
    /// Throws QVE_RuntimeError with the mapped status and the text
    /// "QVE error=<status>; errno=<error> <the system's message><where>". By custom `where` begins with " - ".
    [[noreturn]] static void Throw(int error, int fallback, std::string_view where);
};

}  // namespace qve
