#include "os/ZeroedMemory.h"

#include <sys/mman.h>

#include <cstdlib>
#include <new>

namespace qve {

namespace {

constexpr uint64_t mapped = uint64_t{1} << 20;  // from this size on the block is a mapping of its own

}  // namespace

ZeroedMemory::ZeroedMemory(uint64_t size, bool dense) {
    if (size == 0) return;
    if (size < mapped) {
        m_bytes = std::calloc(size, 1);
        if (!m_bytes) throw std::bad_alloc();
    } else {
        m_bytes = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (m_bytes == MAP_FAILED) throw std::bad_alloc();
        // Only advice: where the system has no large pages, small ones do.
        if (dense) ::madvise(m_bytes, size, MADV_HUGEPAGE);
    }
    m_size = size;
}

void ZeroedMemory::Release() {
    if (m_size >= mapped) {
        ::munmap(m_bytes, m_size);
    } else {
        std::free(m_bytes);
    }
}

}  // namespace qve
