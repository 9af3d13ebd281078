#include <sys/stat.h>

#include <cerrno>

#include "os/OS.h"
#include "os/Path.h"
#include "os/PosixApi.h"
#include "os/status.h"

namespace qve {

OS::Status OS::stat(std::wstring_view path) {
    struct ::stat found;
    const std::string native = Path::nativepath(path);
    if (::stat(native.c_str(), &found) != 0) {
        PosixApi::Throw(errno, status::OS_stat, " - OS::stat(path=\"" + native + "\")");
    }
    return {static_cast<uint64_t>(found.st_size), static_cast<int64_t>(found.st_mtime), S_ISDIR(found.st_mode)};
}

}  // namespace qve
