#include "os/WorkFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <exception>
#include <utility>

#include "os/OS.h"
#include "os/Path.h"

namespace qve {

FolderClaim::FolderClaim(std::wstring_view path) {
    const std::string native = Path::nativepath(path);
    const int descriptor = ::open(native.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    struct stat held = {}, present = {};
    // Someone may have taken it for abandoned between its making and here.
    const bool own = ::flock(descriptor, LOCK_EX | LOCK_NB) == 0 && ::fstat(descriptor, &held) == 0 &&
                     ::stat(native.c_str(), &present) == 0 && held.st_ino == present.st_ino &&
                     held.st_dev == present.st_dev;
    if (own) {
        m_descriptor = descriptor;
    } else {
        ::close(descriptor);
    }
}

FolderClaim::~FolderClaim() {
    if (m_descriptor >= 0) ::close(m_descriptor);
}

FolderClaim::FolderClaim(FolderClaim&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

FolderClaim& FolderClaim::operator=(FolderClaim&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

WorkFolder::WorkFolder(const std::wstring& parent, const std::wstring& prefix) {
    RemoveAbandoned(parent, prefix);
    // Where the file system knows no locks, it goes without: others cannot take the claim there either.
    for (int attempt = 0; attempt < 8 && !m_claim.IsHeld(); ++attempt) {
        if (!m_path.empty() && Path::isdir(m_path)) break;
        m_path = OS::mkdtemp(parent, prefix);
        m_claim = FolderClaim(m_path);
    }
}

WorkFolder::~WorkFolder() {
    try {
        if (Path::exists(m_path)) OS::rmdir(m_path, true);
    } catch (const std::exception&) {
        // It is abandoned then, and the next one removes it.
    }
}

std::vector<std::wstring> WorkFolder::FindAbandoned(const std::wstring& parent, const std::wstring& prefix) {
    std::vector<std::wstring> found;
    for (const std::wstring& name : OS::listdir(parent)) {
        if (!name.starts_with(prefix)) continue;
        std::wstring path = Path::join(parent, name);
        if (Path::isdir(path) && FolderClaim(path).IsHeld()) found.push_back(std::move(path));
    }
    return found;
}

void WorkFolder::RemoveAbandoned(const std::wstring& parent, const std::wstring& prefix) noexcept {
    try {
        for (const std::wstring& path : FindAbandoned(parent, prefix)) {
            // Claimed while it goes: its number may be another process's by now.
            const FolderClaim claim(path);
            if (claim.IsHeld()) OS::rmdir(path, true);
        }
    } catch (const std::exception&) {
        // What cannot be read or removed now is for the next one.
    }
}

}  // namespace qve
