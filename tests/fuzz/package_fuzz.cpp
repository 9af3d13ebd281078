// Package files of arbitrary bytes: the tree is read, every file in it opened and all of its bytes touched, and the
// whole written out into memory. What is no package is refused with a number.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "storage/MemoryDirectoryTableSpace.h"
#include "storage/Package.h"
#include "storage/PkgTableSpace.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace {

using namespace qve;

/// A file in memory.
class MemoryFile {
public:
    MemoryFile(const uint8_t* data, size_t size) : m_descriptor(::memfd_create("package", MFD_CLOEXEC)) {
        if (m_descriptor < 0 || ::write(m_descriptor, data, size) != static_cast<ssize_t>(size)) std::abort();
    }
    ~MemoryFile() { ::close(m_descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    std::wstring GetPath() const { return L"/proc/self/fd/" + std::to_wstring(m_descriptor); }

private:
    const int m_descriptor;
};

/// Runs an action that may be refused, but only with a number and a text.
template <class F>
bool Try(F action) {
    try {
        action();
        return true;
    } catch (const QuillonException& fault) {
        if (fault.GetStatus() != 0 && !fault.GetText().empty()) return false;
        std::fprintf(stderr, "refused without a number\n");
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const MemoryFile file(data, size);
    const std::wstring path = file.GetPath();
    const bool whole = Try([&] { Package::Open(MakeRef<DataFile>(path, false)); });
    const auto copy = MakeRef<MemoryDirectoryTableSpace>(L"copy");
    const bool expanded = Try([&] { Package::Expand(copy, path); });
    // Both readers agree: the one that reads all nodes at once, and the one that reads those of files later.
    if (whole != expanded) {
        std::fprintf(stderr, "the readers disagree\n");
        std::abort();
    }
    return 0;
}
