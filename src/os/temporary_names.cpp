#include <fcntl.h>
#include <sched.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <mutex>

#include "os/OS.h"
#include "os/Path.h"
#include "os/PosixApi.h"
#include "os/status.h"

namespace qve {

namespace {

// Held for a few instructions as a rule; the thread that makes the directory holds it longer, hence the yield.
class SpinLock {
public:
    void lock() {
        for (unsigned round = 0; m_held.exchange(true, std::memory_order_acquire); ++round) {
            if (round < 16)
                __builtin_ia32_pause();
            else
                ::sched_yield();
        }
    }
    void unlock() { m_held.store(false, std::memory_order_release); }

private:
    std::atomic<bool> m_held{false};
};

SpinLock s_tempLock;
std::wstring s_customTempDir;
std::wstring s_defaultTempDir;

std::wstring make_default_directory() {
    const char* base = ::getenv("TMPDIR");
    std::wstring path = base && *base ? Path::wcharpath(base) : L"/tmp";
    for (const wchar_t* name : {L"corvane", L"temp"}) {
        path = Path::join(path, name);
        OS::mkdir(path, true);
    }
    return path;
}

// Path, prefix and the six places that the system fills in.
std::string name_template(std::wstring_view directory, std::wstring_view prefix, std::wstring_view suffix) {
    const std::wstring base = directory.empty() ? OS::gettempdir() : std::wstring(directory);
    std::wstring name(prefix.empty() ? L"qve_" : prefix);
    name += L"XXXXXX";
    name += suffix;
    return Path::utf8path(Path::join(base, name));
}

}  // namespace

void OS::tempdir(std::wstring_view path) {
    std::lock_guard lock(s_tempLock);
    s_customTempDir = path;
}

std::wstring OS::gettempdir() {
    std::lock_guard lock(s_tempLock);
    if (!s_customTempDir.empty()) return s_customTempDir;
    if (s_defaultTempDir.empty()) s_defaultTempDir = make_default_directory();
    return s_defaultTempDir;
}

std::wstring OS::mkstemp(std::wstring_view directory, std::wstring_view prefix, std::wstring_view suffix) {
    std::string path = name_template(directory, prefix, suffix);
    const int descriptor = ::mkostemps(path.data(), static_cast<int>(Path::utf8path(suffix).size()), O_CLOEXEC);
    if (descriptor < 0) PosixApi::Throw(errno, status::OS_mkstemp, " - OS::mkstemp(path=\"" + path + "\")");
    ::close(descriptor);
    return Path::wcharpath(path);
}

std::wstring OS::mkdtemp(std::wstring_view directory, std::wstring_view prefix, std::wstring_view suffix) {
    std::string path = name_template(directory, prefix, {});
    if (!::mkdtemp(path.data())) PosixApi::Throw(errno, status::OS_mkdtemp, " - OS::mkdtemp(path=\"" + path + "\")");
    std::wstring made = Path::wcharpath(path);
    if (suffix.empty()) return made;
    // The system's call knows no suffix. Its name is unique in the directory, so this one is as well.
    std::wstring named = made;
    named += suffix;
    OS::rename(made, named);
    return named;
}

}  // namespace qve
