// A library to be preloaded: it counts the calls that change the disk and, at a chosen one, kills the process or lets
// the call fail as a full or broken disk does.

#include "tests/support/fault_injection.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

FaultControl* Control() {
    static FaultControl* const control = []() -> FaultControl* {
        const char* path = std::getenv("QVE_FAULTS");
        if (!path) return nullptr;
        const int descriptor = ::open(path, O_RDWR | O_CLOEXEC);
        if (descriptor < 0) return nullptr;
        void* shared = ::mmap(nullptr, sizeof(FaultControl), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        ::close(descriptor);
        return shared == MAP_FAILED ? nullptr : static_cast<FaultControl*>(shared);
    }();
    return control;
}

/// Counts a call; the error with which it is to fail, 0 when it may go on. Does not return when the process is to die.
int Hit(const char* name) {
    FaultControl* control = Control();
    if (!control || !control->armed.load()) return 0;
    if (control->calls.fetch_add(1) != control->at.load()) return 0;
    std::strncpy(control->name, name, sizeof control->name - 1);
    switch (control->kind.load()) {
        case FaultControl::kill:
            ::kill(::getpid(), SIGKILL);
            return EIO;
        case FaultControl::noSpace:
            return ENOSPC;
        case FaultControl::inputOutput:
            return EIO;
        default:
            return 0;
    }
}

bool IsFile(int descriptor) {
    struct stat status;
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

template <class F>
F Next(const char* name) {
    return reinterpret_cast<F>(::dlsym(RTLD_NEXT, name));
}

/// The call itself, unless it is hit. `Tag` is another one for each call, since what is looked up is kept.
template <class R, class Tag, class... Args>
R Call(Tag, const char* name, Args... args) {
    static const auto next = Next<R (*)(Args...)>(name);
    if (const int error = Hit(name)) {
        errno = error;
        return static_cast<R>(-1);
    }
    return next(args...);
}

}  // namespace

extern "C" {

ssize_t write(int descriptor, const void* bytes, size_t count) {
    static const auto next = Next<ssize_t (*)(int, const void*, size_t)>("write");
    return IsFile(descriptor) ? Call<ssize_t>([] {}, "write", descriptor, bytes, count)
                              : next(descriptor, bytes, count);
}
ssize_t pwrite(int descriptor, const void* bytes, size_t count, off_t offset) {
    return Call<ssize_t>([] {}, "pwrite", descriptor, bytes, count, offset);
}
ssize_t pwrite64(int descriptor, const void* bytes, size_t count, off64_t offset) {
    return Call<ssize_t>([] {}, "pwrite64", descriptor, bytes, count, offset);
}
int rename(const char* from, const char* to) noexcept {
    return Call<int>([] {}, "rename", from, to);
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    return Call<int>([] {}, "renameat2", fromFolder, from, toFolder, to, flags);
}
int unlink(const char* path) noexcept {
    return Call<int>([] {}, "unlink", path);
}
int rmdir(const char* path) noexcept {
    return Call<int>([] {}, "rmdir", path);
}
int mkdir(const char* path, mode_t mode) noexcept {
    return Call<int>([] {}, "mkdir", path, mode);
}
int fsync(int descriptor) {
    return Call<int>([] {}, "fsync", descriptor);
}
int fdatasync(int descriptor) {
    return Call<int>([] {}, "fdatasync", descriptor);
}
int ftruncate(int descriptor, off_t size) noexcept {
    return Call<int>([] {}, "ftruncate", descriptor, size);
}
int ftruncate64(int descriptor, off64_t size) noexcept {
    return Call<int>([] {}, "ftruncate64", descriptor, size);
}
int posix_fallocate(int descriptor, off_t offset, off_t size) {
    static const auto next = Next<int (*)(int, off_t, off_t)>("posix_fallocate");
    if (const int error = Hit("posix_fallocate")) return error;
    return next(descriptor, offset, size);
}
int posix_fallocate64(int descriptor, off64_t offset, off64_t size) {
    static const auto next = Next<int (*)(int, off64_t, off64_t)>("posix_fallocate64");
    if (const int error = Hit("posix_fallocate64")) return error;
    return next(descriptor, offset, size);
}
int mkostemps(char* name, int suffix, int flags) {
    return Call<int>([] {}, "mkostemps", name, suffix, flags);
}
char* mkdtemp(char* name) noexcept {
    static const auto next = Next<char* (*)(char*)>("mkdtemp");
    if (const int error = Hit("mkdtemp")) {
        errno = error;
        return nullptr;
    }
    return next(name);
}
FILE* fopen(const char* path, const char* mode) {
    static const auto next = Next<FILE* (*)(const char*, const char*)>("fopen");
    if (mode[0] != 'r') {
        if (const int error = Hit("fopen")) {
            errno = error;
            return nullptr;
        }
    }
    return next(path, mode);
}

}  // extern "C"
