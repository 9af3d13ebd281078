#pragma once

#include <cstdint>
#include <utility>

namespace qve {

/// A block of bytes that are 0 to begin with; a large one is BudgetedMemory. Of a large block only the parts that are
/// touched take memory and time.
class ZeroedMemory {
public:
    ZeroedMemory() = default;
    /// With `dense`, most of the block will be touched, in any order: it then asks the system for large pages. Throws
    /// what BudgetedMemory::Allocate throws.
    explicit ZeroedMemory(uint64_t size, bool dense = false);
    ~ZeroedMemory() { Release(); }
    ZeroedMemory(ZeroedMemory&& other) noexcept
        : m_bytes(std::exchange(other.m_bytes, nullptr)), m_size(std::exchange(other.m_size, 0)) {}
    ZeroedMemory& operator=(ZeroedMemory&& other) noexcept {
        std::swap(m_bytes, other.m_bytes);
        std::swap(m_size, other.m_size);
        return *this;
    }

    /// Aligned for any number; null for a block of no bytes.
    void* data() { return m_bytes; }
    const void* data() const { return m_bytes; }
    uint64_t size() const { return m_size; }

private:
    void Release();

    void* m_bytes = nullptr;
    uint64_t m_size = 0;
};

}  // namespace qve
