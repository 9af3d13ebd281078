#include "os/OS.h"

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "os/Path.h"
#include "os/PosixApi.h"
#include "os/status.h"
#include "system/QuillonException.h"

extern char** environ;

namespace qve {

namespace {

std::string where(const char* function, const std::string& path) {
    return std::string(" - ") + function + "(path=\"" + path + "\")";
}

// A descriptor that closes itself.
class Descriptor {
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor() {
        if (m_descriptor >= 0) ::close(m_descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return m_descriptor; }
    // The result of close, which is where some file systems report what a write could not.
    int close() { return ::close(std::exchange(m_descriptor, -1)); }

private:
    int m_descriptor;
};

// 0, or the error number.
int make_directory(const std::string& path) {
    return ::mkdir(path.c_str(), 0777) == 0 ? 0 : errno;
}

// Moves by the system's own tool, which copies where rename cannot reach. False when that fails.
bool move_across_file_systems(const std::string& from, const std::string& to) {
    posix_spawn_file_actions_t actions;
    if (posix_spawn_file_actions_init(&actions) != 0) return false;
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::string program = "/bin/mv", exactly = "-T", options_end = "--", source = from, target = to;
    char* arguments[] = {program.data(), exactly.data(), options_end.data(), source.data(), target.data(), nullptr};
    pid_t child;
    const int error = posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) return false;
    int status;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) return false;
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::unique_ptr<DIR, int (*)(DIR*)> open_directory(const std::string& path) {
    std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir(path.c_str()), &::closedir);
    if (!directory) PosixApi::Throw(errno, status::OS_listdir, where("OS::listdir", path));
    return directory;
}

// Visits the entries of a directory but "." and "..".
template <class Visit>
void for_each_entry(const std::string& path, Visit visit) {
    const auto directory = open_directory(path);
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(directory.get());
        if (!entry) {
            if (errno != 0) PosixApi::Throw(errno, status::OS_listdir, where("OS::listdir", path));
            return;
        }
        const std::string_view name(entry->d_name);
        if (name != "." && name != "..") visit(*entry);
    }
}

// Links are entries of their own, so that what they point to is left alone.
bool is_real_directory(const std::string& path) {
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// Everything below `root`, by a work list: depth of the tree costs memory and no stack.
void remove_contents(const std::string& root) {
    std::vector<std::string> directories{root};
    for (size_t next = 0; next < directories.size(); ++next) {
        for_each_entry(directories[next], [&, path = directories[next]](const dirent& entry) {
            std::string child = path + '/' + entry.d_name;
            if (is_real_directory(child)) {
                directories.push_back(std::move(child));
            } else if (::unlink(child.c_str()) != 0) {
                PosixApi::Throw(errno, status::OS_rmdir, where("OS::rmdir", child));
            }
        });
    }
    for (size_t i = directories.size(); i-- > 1;) {
        if (::rmdir(directories[i].c_str()) != 0)
            PosixApi::Throw(errno, status::OS_rmdir, where("OS::rmdir", directories[i]));
    }
}

}  // namespace

int OS::getpid() {
    return ::getpid();
}

std::wstring OS::getcwd() {
    std::unique_ptr<char, void (*)(void*)> path(::getcwd(nullptr, 0), &::free);
    if (!path) PosixApi::Throw(errno, status::OS_getcwd, " - OS::getcwd");
    return Path::wcharpath(path.get());
}

std::vector<std::wstring> OS::listdir(std::wstring_view path) {
    std::vector<std::wstring> names;
    for_each_entry(Path::utf8path(path), [&](const dirent& entry) { names.push_back(Path::wcharpath(entry.d_name)); });
    return names;
}

std::vector<OS::Entry> OS::listdir2(std::wstring_view path) {
    std::vector<Entry> entries;
    for_each_entry(Path::utf8path(path), [&](const dirent& entry) {
        std::wstring name = Path::wcharpath(entry.d_name);
        const bool directory = Path::isdir(Path::join(path, name));
        entries.push_back({std::move(name), directory});
    });
    return entries;
}

void OS::mkdir(std::wstring_view path, bool parents) {
    const std::string narrow = Path::utf8path(path);
    if (!parents) {
        const int error = make_directory(narrow);
        if (error == EEXIST) throw QVE_RuntimeError(status::OS_mkdir, "Path exists." + where("OS::mkdir", narrow));
        if (error != 0) PosixApi::Throw(error, status::OS_mkdir, where("OS::mkdir", narrow));
        return;
    }
    for (size_t end = 0; end < narrow.size();) {
        end = std::min(narrow.find('/', end + 1), narrow.size());
        const std::string part = narrow.substr(0, end);
        const int error = make_directory(part);
        // Some systems answer otherwise than EEXIST for a directory that is there, as for the root of a read-only one.
        if (error != 0 && !Path::isdir(Path::wcharpath(part)))
            PosixApi::Throw(error, status::OS_mkdir, where("OS::mkdir", part));
    }
}

void OS::rename(std::wstring_view from, std::wstring_view to) {
    const std::string source = Path::utf8path(from), target = Path::utf8path(to);
    if (::rename(source.c_str(), target.c_str()) == 0) return;
    const int error = errno;
    if (error == EXDEV && move_across_file_systems(source, target)) return;
    PosixApi::Throw(error, status::OS_rename, " - OS::rename(src=\"" + source + "\", dst=\"" + target + "\")");
}

bool OS::exchange(std::wstring_view one, std::wstring_view other) {
    const std::string first = Path::utf8path(one), second = Path::utf8path(other);
    if (::renameat2(AT_FDCWD, first.c_str(), AT_FDCWD, second.c_str(), RENAME_EXCHANGE) == 0) return true;
    const int error = errno;
    if (error == EINVAL || error == ENOSYS || error == EXDEV) return false;
    PosixApi::Throw(error, status::OS_rename, " - OS::exchange(src=\"" + first + "\", dst=\"" + second + "\")");
}

void OS::rmdir(std::wstring_view path, bool recursive) {
    const std::string narrow = Path::utf8path(path);
    if (recursive && is_real_directory(narrow)) remove_contents(narrow);
    if (::rmdir(narrow.c_str()) == 0) return;
    const int error = errno;
    const char* fact = !Path::exists(path) ? " - (path does not exist)"
                       : Path::isdir(path) ? " - (path exists, is a directory)"
                                           : " - (path exists, is a file)";
    PosixApi::Throw(error, status::OS_rmdir, where("OS::rmdir", narrow) + fact);
}

void OS::unlink(std::wstring_view path) {
    const std::string narrow = Path::utf8path(path);
    if (::unlink(narrow.c_str()) != 0) PosixApi::Throw(errno, status::OS_unlink, where("OS::unlink", narrow));
}

void OS::touch(std::wstring_view path) {
    const std::string narrow = Path::utf8path(path);
    FILE* file = ::fopen(narrow.c_str(), "abe");
    if (!file) PosixApi::Throw(errno, status::OS_touch, " - OS::touch(fopen path=\"" + narrow + "\")");
    if (::fclose(file) != 0) PosixApi::Throw(errno, status::OS_touch, " - OS::touch(fclose path=\"" + narrow + "\")");
}

void OS::copy(std::wstring_view from, std::wstring_view to) {
    const std::string source = Path::utf8path(from), target = Path::utf8path(to);
    const auto fail = [&](int error) {
        PosixApi::Throw(error, status::OS_copy, " - OS::copy(src=\"" + source + "\", dst=\"" + target + "\")");
    };
    const Descriptor input(::open(source.c_str(), O_RDONLY | O_CLOEXEC));
    if (input.get() < 0) fail(errno);
    Descriptor output(::open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (output.get() < 0) fail(errno);
    std::vector<char> buffer(1 << 20);
    for (;;) {
        const ssize_t count = ::read(input.get(), buffer.data(), buffer.size());
        if (count == 0) break;
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) fail(errno);
        for (ssize_t done = 0; done < count;) {
            const ssize_t written = ::write(output.get(), buffer.data() + done, count - done);
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) fail(errno);
            done += written;
        }
    }
    if (output.close() != 0) fail(errno);
}

std::string OS::strerror(int error) {
    char buffer[256];
    return ::strerror_r(error, buffer, sizeof(buffer));
}

int OS::get_errno() {
    return errno;
}

uint64_t OS::Limits::get_descriptors_soft_limit() {
    rlimit limits;
    if (::getrlimit(RLIMIT_NOFILE, &limits) != 0)
        PosixApi::Throw(errno, status::OS_Limits, " - OS::Limits::get_descriptors_soft_limit");
    return limits.rlim_cur;
}

uint64_t OS::Limits::get_descriptors_hard_limit() {
    rlimit limits;
    if (::getrlimit(RLIMIT_NOFILE, &limits) != 0)
        PosixApi::Throw(errno, status::OS_Limits, " - OS::Limits::get_descriptors_hard_limit");
    return limits.rlim_max;
}

void OS::Limits::set_descriptors_soft_limit(uint64_t limit) {
    rlimit limits;
    if (::getrlimit(RLIMIT_NOFILE, &limits) != 0)
        PosixApi::Throw(errno, status::OS_Limits, " - OS::Limits::set_descriptors_soft_limit");
    limits.rlim_cur = limit;
    if (::setrlimit(RLIMIT_NOFILE, &limits) != 0)
        PosixApi::Throw(errno, status::OS_Limits, " - OS::Limits::set_descriptors_soft_limit");
}

}  // namespace qve
