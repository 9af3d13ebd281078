#include "server/pid_temp_directory.h"

#include <string>

#include "os/OS.h"
#include "os/Path.h"
#include "os/WorkFolder.h"
#include "telemetry/LogEntry.h"

namespace qve {

void UsePidTempDirectory() {
    const std::wstring name = L"qve-tempdir-" + std::to_wstring(OS::getpid());
    const std::wstring path = Path::abspath(Path::join(OS::gettempdir(), name));
    if (Path::isfile(path)) {
        LogEntry() << "qveserver: PID temp directory is a file: " << path;
        return;
    }
    try {
        // What killed processes left; one of them may have had this number.
        WorkFolder::RemoveAbandoned(OS::gettempdir(), L"qve-tempdir-");
        if (!Path::exists(path)) OS::mkdir(path, false);
        static const FolderClaim claim(path);
        // Only writing shows that it is writable.
        const std::wstring proof = Path::join(path, name);
        OS::touch(proof);
        OS::unlink(proof);
        OS::tempdir(path);
    } catch (const std::exception& exception) {
        LogEntry() << "qveserver: PID temp directory not writable: " << path << " " << exception.what();
    }
}

}  // namespace qve
