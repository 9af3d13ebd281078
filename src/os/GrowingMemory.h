#pragma once

#include <cstddef>
#include <cstdint>

namespace qve {

/// Bytes in memory whose number changes. A large block is moved by its pages when it grows, not copied, and asks the
/// system for large pages, so that filling it costs few page faults. It begins at a cache line, so that no load of a
/// vector, were it as wide as that, touches two.
class GrowingMemory {
public:
    GrowingMemory() = default;
    ~GrowingMemory() { Release(); }
    GrowingMemory(const GrowingMemory&) = delete;
    GrowingMemory& operator=(const GrowingMemory&) = delete;

    /// Null while there has never been a byte.
    char* data() { return m_bytes; }
    const char* data() const { return m_bytes; }
    uint64_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    void Swap(GrowingMemory& other) noexcept;

    /// Makes it `size` bytes; new ones are 0. Throws std::bad_alloc, and then nothing has changed.
    void Resize(uint64_t size);
    /// Adds `count` bytes. They must not lie in this very memory.
    void Append(const void* bytes, uint64_t count);

private:
    void Reserve(uint64_t capacity);
    void Release();

    char* m_bytes = nullptr;
    uint64_t m_size = 0;
    uint64_t m_used = 0;      // the greatest size so far in this block
    uint64_t m_capacity = 0;  // from `mapped` on the block is a mapping of its own, before that it is on the heap
};

}  // namespace qve
