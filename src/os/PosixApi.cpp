#include "os/PosixApi.h"

#include <cerrno>
#include <string>

#include "os/OS.h"
#include "system/QuillonException.h"

namespace qve {

int PosixApi::MapGeneralOSErrorToQveStatus(int error, int fallback) {
    switch (error) {
        case ENOSPC:
            return 100;
        case EDQUOT:
            return 101;
        case ENOMEM:
            return 102;
        case ENFILE:
        case EMFILE:
            return 103;
        default:
            return fallback;
    }
}

void PosixApi::Throw(int error, int fallback, std::string_view where) {
    const int status = MapGeneralOSErrorToQveStatus(error, fallback);
    std::string text = "QVE error=" + std::to_string(status) + "; errno=" + std::to_string(error) + " ";
    text += OS::strerror(error);
    text += where;
    throw QVE_RuntimeError(status, text);
}

}  // namespace qve
