#include "os/GrowingMemory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace qve {

namespace {

constexpr uint64_t cache_line = 64;
constexpr uint64_t mapped = uint64_t{1} << 20;      // from this capacity on
constexpr uint64_t large_page = uint64_t{2} << 20;  // of the usual processors

uint64_t round_up(uint64_t bytes, uint64_t unit) {
    return (bytes + unit - 1) / unit * unit;
}

}  // namespace

void GrowingMemory::Release() {
    if (m_capacity >= mapped)
        ::munmap(m_bytes, m_capacity);
    else
        std::free(m_bytes);
}

void GrowingMemory::Swap(GrowingMemory& other) noexcept {
    std::swap(m_bytes, other.m_bytes);
    std::swap(m_size, other.m_size);
    std::swap(m_used, other.m_used);
    std::swap(m_capacity, other.m_capacity);
}

void GrowingMemory::Reserve(uint64_t capacity) {
    if (capacity <= m_capacity) return;
    if (capacity > static_cast<uint64_t>(PTRDIFF_MAX) / 2) throw std::bad_alloc();
    // Half as much again each time: the pages that nobody touches yet cost nothing.
    capacity = std::max({capacity, m_capacity + m_capacity / 2, uint64_t{64}});
    if (capacity < mapped) {
        capacity = round_up(capacity, cache_line);
        void* const bytes = std::aligned_alloc(cache_line, capacity);
        if (!bytes) throw std::bad_alloc();
        if (m_size > 0) std::memcpy(bytes, m_bytes, m_size);
        std::free(m_bytes);
        m_bytes = static_cast<char*>(bytes);
        m_capacity = capacity;
        return;
    }
    capacity = round_up(capacity, large_page);
    const bool grows = m_capacity >= mapped;
    void* const bytes = grows ? ::mremap(m_bytes, m_capacity, capacity, MREMAP_MAYMOVE)
                              : ::mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (bytes == MAP_FAILED) throw std::bad_alloc();
    // Only advice: where the system has no large pages, small ones do.
    ::madvise(bytes, capacity, MADV_HUGEPAGE);
    if (!grows) {
        if (m_size > 0) std::memcpy(bytes, m_bytes, m_size);
        std::free(m_bytes);
        m_used = m_size;
    }
    m_bytes = static_cast<char*>(bytes);
    m_capacity = capacity;
}

void GrowingMemory::Resize(uint64_t size) {
    Reserve(size);
    // A mapping begins as zeros: only what was in use before has to be cleared.
    const uint64_t dirty = m_capacity >= mapped ? std::min(size, m_used) : size;
    if (dirty > m_size) std::memset(m_bytes + m_size, 0, dirty - m_size);
    m_size = size;
    m_used = std::max(m_used, size);
}

void GrowingMemory::Append(const void* bytes, uint64_t count) {
    if (count == 0) return;
    if (count > static_cast<uint64_t>(PTRDIFF_MAX)) throw std::bad_alloc();
    Reserve(m_size + count);
    std::memcpy(m_bytes + m_size, bytes, count);
    m_size += count;
    m_used = std::max(m_used, m_size);
}

}  // namespace qve
