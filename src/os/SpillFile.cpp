#include "os/SpillFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "os/OS.h"
#include "os/Path.h"
#include "os/PosixApi.h"
#include "os/status.h"

namespace qve {

SpillFile::~SpillFile() {
    if (m_file >= 0) ::close(m_file);
}

int SpillFile::Open() {
    const std::string directory = Path::utf8path(OS::gettempdir());
    int file = ::open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (file >= 0) return file;
    // Not every file system makes files without a name.
    const std::wstring path = OS::mkstemp();
    file = ::open(Path::utf8path(path).c_str(), O_RDWR | O_CLOEXEC);
    const int error = errno;
    OS::unlink(path);
    if (file < 0) PosixApi::Throw(error, status::SpillFile_Write, " - SpillFile::Open");
    return file;
}

uint64_t SpillFile::Append(const void* bytes, uint64_t size) {
    if (m_file < 0) m_file = Open();
    const char* from = static_cast<const char*>(bytes);
    for (uint64_t done = 0; done < size;) {
        const ssize_t written = ::pwrite(m_file, from + done, size - done, static_cast<off_t>(m_size + done));
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) PosixApi::Throw(errno, status::SpillFile_Write, " - SpillFile::Append");
        done += static_cast<uint64_t>(written);
    }
    const uint64_t position = m_size;
    m_size += size;
    return position;
}

void SpillFile::Read(uint64_t position, void* bytes, uint64_t size) const {
    char* to = static_cast<char*>(bytes);
    for (uint64_t done = 0; done < size;) {
        const ssize_t got = ::pread(m_file, to + done, size - done, static_cast<off_t>(position + done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) PosixApi::Throw(got < 0 ? errno : EIO, status::SpillFile_Read, " - SpillFile::Read");
        done += static_cast<uint64_t>(got);
    }
}

}  // namespace qve
