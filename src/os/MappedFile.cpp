#include "os/MappedFile.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <ucontext.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <memory>
#include <mutex>

#include "metrics/Scope.h"
#include "os/Path.h"
#include "os/PosixApi.h"
#include "os/status.h"
#include "system/QuillonException.h"

namespace qve {

std::atomic<bool> MappedFile::s_MemoryMapEntireFile{false};
std::atomic<bool> MappedFile::s_trackingMappedFiles{false};
std::atomic<uint64_t> MappedFile::s_nextID{1};
std::atomic<uint64_t> MappedFile::s_cuts{0};

namespace {

struct Registry {
    std::mutex mutex;
    std::map<const char*, MappedFile::Tracked> mappings;  // by first address
};

// Never destroyed: threads that nobody joins may let go of a mapping while the process ends.
Registry& registry() {
    static Registry* const instance = std::make_unique<Registry>().release();
    return *instance;
}

uint64_t file_size(const DataFile& file) {
    struct stat status;
    if (::fstat(file.GetDescriptor(), &status) != 0)
        PosixApi::Throw(errno, status::MappedFile_Size, " - MappedFile::MappedFile(fstat)");
    return static_cast<uint64_t>(status.st_size);
}

}  // namespace

MappedFile::MappedFile(RefCntPtr<DataFile> file, uint64_t offset, uint64_t limit, bool writable, bool entireFile)
    : m_file(std::move(file)),
      m_offset(offset),
      m_limit(limit),
      m_writable(writable),
      m_id(s_nextID.fetch_add(1, std::memory_order_relaxed)),
      m_mappedOffset(offset),
      m_mappedLimit(limit) {
    Metrics::Scope scope("MappedFile::MappedFile", Metrics::Bits::Files);
    scope.NameValue("mfid", m_id);
    scope.NameValue("dfid", m_file->GetId());

    const std::string where =
        " - MappedFile::MappedFile(mmap: offset=" + std::to_string(offset) + " limit=" + std::to_string(limit) + ")";
    const uint64_t size = file_size(*m_file);
    if (offset > size || limit > size - offset)
        throw QVE_RuntimeError(status::MappedFile_Size, "The file is shorter than its contents" + where);
    if (entireFile) {
        m_mappedOffset = 0;
        m_mappedLimit = size;
    }
    void* address = ::mmap(nullptr, m_mappedLimit, PROT_READ | (writable ? PROT_WRITE : 0), MAP_SHARED,
                           m_file->GetDescriptor(), static_cast<off_t>(m_mappedOffset));
    if (address == MAP_FAILED) PosixApi::Throw(errno, status::MappedFile_Map, where);
    m_address = static_cast<char*>(address);

    if (s_trackingMappedFiles.load(std::memory_order_relaxed)) {
        std::lock_guard lock(registry().mutex);
        registry().mappings[m_address] = {m_file->GetPath(), m_mappedOffset, m_mappedLimit, m_id};
        m_tracked = true;
    }
}

MappedFile::~MappedFile() {
    if (m_tracked) {
        std::lock_guard lock(registry().mutex);
        registry().mappings.erase(m_address);
    }
    ::munmap(m_address, m_mappedLimit);
}

void MappedFile::SurviveCutFiles() {
    static const uintptr_t pageMask = ~(static_cast<uintptr_t>(Alignment()) - 1);
    struct sigaction action = {};
    action.sa_flags = SA_SIGINFO;
    // Nothing here but system calls and atomics: it runs wherever the access was.
    action.sa_sigaction = [](int signal, siginfo_t* info, void* context) {
        const int error = errno;
        const uintptr_t page = reinterpret_cast<uintptr_t>(info->si_addr) & pageMask;
        const auto code = static_cast<uintptr_t>(static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP]);
        // A page of the program itself is not to be replaced by zeros.
        const bool data = info->si_code == BUS_ADRERR && page != (code & pageMask);
        if (data && ::mmap(reinterpret_cast<void*>(page), ~pageMask + 1, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) != MAP_FAILED) {
            s_cuts.fetch_add(1, std::memory_order_release);
        } else {
            ::signal(signal, SIG_DFL);  // the access is repeated, and ends the process
        }
        errno = error;
    };
    if (::sigaction(SIGBUS, &action, nullptr) != 0)
        PosixApi::Throw(errno, status::MappedFile_Map, " - MappedFile::SurviveCutFiles");
}

void MappedFile::CheckCuts(uint64_t before) {
    if (GetCutCount() == before) return;
    throw QVE_RuntimeError(status::MappedFile_Cut,
                           "A file that was being read has been cut short by another program. Its contents are lost to "
                           "this statement; restore the file and try again.");
}

bool MappedFile::IsShortage(const QVE_RuntimeError& fault) {
    return fault.GetStatus() != status::MappedFile_Size;
}

uint64_t MappedFile::Alignment() {
    static const uint64_t alignment = static_cast<uint64_t>(::sysconf(_SC_PAGESIZE));
    return alignment;
}

std::optional<MappedFile::Tracked> MappedFile::GetMappedFileFromAddress(const void* address) {
    std::lock_guard lock(registry().mutex);
    const auto& mappings = registry().mappings;
    auto next = mappings.upper_bound(static_cast<const char*>(address));
    if (next == mappings.begin()) return std::nullopt;
    const auto& [first, mapping] = *--next;
    if (static_cast<const char*>(address) >= first + mapping.limit) return std::nullopt;
    return mapping;
}

}  // namespace qve
