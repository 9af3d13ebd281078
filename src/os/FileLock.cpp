#include "os/FileLock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "os/Path.h"
#include "os/PosixApi.h"
#include "os/status.h"
#include "system/unicode.h"

namespace qve {

FileLock::FileLock(std::wstring_view path, bool create) : m_path(path) {
    const std::string native = Path::nativepath(path);
    m_descriptor = ::open(native.c_str(), O_RDWR | O_CLOEXEC | (create ? O_CREAT : 0), 0666);
    m_writable = m_descriptor >= 0;
    if (!m_writable) m_descriptor = ::open(native.c_str(), O_RDONLY | O_CLOEXEC);
}

FileLock::~FileLock() {
    if (m_descriptor >= 0) ::close(m_descriptor);
}

FileLock::FileLock(FileLock&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1)),
      m_writable(other.m_writable),
      m_path(std::move(other.m_path)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    std::swap(m_writable, other.m_writable);
    std::swap(m_path, other.m_path);
    return *this;
}

bool FileLock::Set(unsigned slot, short kind, bool wait) {
    // Locks of the open file description, not of the process: classic POSIX locks would let two objects of one process
    // into a slot together, and would all go when any descriptor of the file is closed.
    struct flock range = {};
    range.l_type = kind;
    range.l_whence = SEEK_SET;
    range.l_start = slot;
    range.l_len = 1;
    while (::fcntl(m_descriptor, wait ? F_OFD_SETLKW : F_OFD_SETLK, &range) != 0) {
        if (errno == EINTR) continue;
        if (!wait && (errno == EAGAIN || errno == EACCES)) return false;
        PosixApi::Throw(errno, status::FileLock_Lock, " - FileLock::Lock(path=\"" + narrow(m_path) + "\")");
    }
    return true;
}

void FileLock::Lock(unsigned slot, bool exclusive) {
    Set(slot, exclusive ? F_WRLCK : F_RDLCK, true);
}

bool FileLock::TryLock(unsigned slot, bool exclusive) {
    return Set(slot, exclusive ? F_WRLCK : F_RDLCK, false);
}

void FileLock::Unlock(unsigned slot) noexcept {
    struct flock range = {};
    range.l_type = F_UNLCK;
    range.l_whence = SEEK_SET;
    range.l_start = slot;
    range.l_len = 1;
    ::fcntl(m_descriptor, F_OFD_SETLK, &range);
}

FileLock::Identity FileLock::GetIdentity() const {
    struct stat file = {};
    if (!IsOpen() || ::fstat(m_descriptor, &file) != 0) return {};
    return {file.st_dev, file.st_ino};
}

bool FileLock::IsCurrent() const {
    struct stat file = {};
    if (!IsOpen() || ::stat(Path::nativepath(m_path).c_str(), &file) != 0) return false;
    return GetIdentity() == Identity(file.st_dev, file.st_ino);
}

// The numbers lie behind the slots.
uint64_t FileLock::ReadNumber(unsigned place) const {
    uint64_t value = 0;
    const auto offset = static_cast<off_t>(slots + place * sizeof value);
    return ::pread(m_descriptor, &value, sizeof value, offset) == sizeof value ? value : 0;
}

void FileLock::WriteNumber(unsigned place, uint64_t value) {
    const auto offset = static_cast<off_t>(slots + place * sizeof value);
    if (::pwrite(m_descriptor, &value, sizeof value, offset) != sizeof value) {
        PosixApi::Throw(errno, status::FileLock_Lock, " - FileLock::WriteNumber(path=\"" + narrow(m_path) + "\")");
    }
}

uint64_t FileLock::ReadCounter() const {
    return ReadNumber(0);
}

void FileLock::WriteCounter(uint64_t value) {
    WriteNumber(0, value);
}

uint64_t FileLock::ReadOwner() const {
    return ReadNumber(1);
}

void FileLock::WriteOwner(uint64_t process) {
    WriteNumber(1, process);
}

uint64_t FileLock::ReadBoot() const {
    return ReadNumber(2);
}

void FileLock::WriteBoot(uint64_t boot) {
    WriteNumber(2, boot);
}

}  // namespace qve
