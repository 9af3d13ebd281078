#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "os/OS.h"
#include "os/Path.h"
#include "os/PosixApi.h"
#include "os/status.h"
#include "system/unicode.h"

namespace qve {

void OS::sync(std::wstring_view path) {
    const auto fail = [&] { PosixApi::Throw(errno, status::OS_sync, " - OS::sync(path=\"" + narrow(path) + "\")"); };
    const int descriptor = ::open(Path::nativepath(path).c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) fail();
    // Some file systems know no fsync of directories and say EINVAL; there is nothing to wait for then.
    const bool failed = ::fsync(descriptor) != 0 && errno != EINVAL;
    const int error = errno;
    ::close(descriptor);
    errno = error;
    if (failed) fail();
}

}  // namespace qve
