#include "os/BudgetedMemory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <mutex>
#include <unordered_set>

#include "os/MappedFile.h"
#include "os/PosixApi.h"
#include "os/SpillFile.h"
#include "os/status.h"

namespace qve {

namespace {

std::atomic<uint64_t> s_budget{0};
std::atomic<uint64_t> s_inMemory{0};
std::atomic<uint64_t> s_inFiles{0};

// The blocks that lie in files. There are few: a block has a mebibyte at least.
class FileBlocks {
public:
    void Insert(void* block) {
        const std::lock_guard lock(m_mutex);
        m_blocks.insert(block);
    }
    bool Erase(void* block) noexcept {
        const std::lock_guard lock(m_mutex);
        return m_blocks.erase(block) > 0;
    }

private:
    std::mutex m_mutex;
    std::unordered_set<void*> m_blocks;
};

FileBlocks& Blocks() {
    static auto* blocks = new FileBlocks;  // outlives what is released at the end of the process
    return *blocks;
}

// Takes `size` bytes of the budget, if it has them.
bool Take(uint64_t size) {
    const uint64_t budget = BudgetedMemory::GetBudget();
    uint64_t used = s_inMemory.load(std::memory_order_relaxed);
    do {
        if (size > budget || used > budget - size) return false;
    } while (!s_inMemory.compare_exchange_weak(used, used + size, std::memory_order_relaxed));
    return true;
}

[[noreturn]] void Fail(int error) {
    PosixApi::Throw(error, status::BudgetedMemory_Allocate, " - BudgetedMemory::Allocate");
}

// A file that has no name and all of its space, so that no write to the mapping can fail.
void* MapFile(uint64_t size) {
    const int file = SpillFile::Open();
    const int full = ::posix_fallocate(file, 0, static_cast<off_t>(size));
    void* block = full ? MAP_FAILED : ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    const int error = full ? full : errno;
    ::close(file);
    if (block == MAP_FAILED) Fail(error);
    return block;
}

}  // namespace

void BudgetedMemory::SetBudget(uint64_t bytes) {
    s_budget.store(bytes, std::memory_order_relaxed);
}

uint64_t BudgetedMemory::GetBudget() {
    const uint64_t bytes = s_budget.load(std::memory_order_relaxed);
    return bytes ? bytes : MappedFile::Physical() / 2;
}

uint64_t BudgetedMemory::GetInMemory() {
    return s_inMemory.load(std::memory_order_relaxed);
}

uint64_t BudgetedMemory::GetInFiles() {
    return s_inFiles.load(std::memory_order_relaxed);
}

void* BudgetedMemory::Allocate(uint64_t size, bool dense) {
    if (!Take(size)) {
        void* block = MapFile(size);
        Blocks().Insert(block);
        s_inFiles.fetch_add(size, std::memory_order_relaxed);
        return block;
    }
    void* block = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED) {
        s_inMemory.fetch_sub(size, std::memory_order_relaxed);
        throw std::bad_alloc();
    }
    // Only advice: where the system has no large pages, small ones do.
    if (dense) ::madvise(block, size, MADV_HUGEPAGE);
    return block;
}

void BudgetedMemory::Release(void* block, uint64_t size) noexcept {
    auto& from = Blocks().Erase(block) ? s_inFiles : s_inMemory;
    ::munmap(block, size);
    from.fetch_sub(size, std::memory_order_relaxed);
}

}  // namespace qve
