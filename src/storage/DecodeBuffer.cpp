#include "storage/DecodeBuffer.h"

#include <new>

namespace qve {

void DecodeBuffer::Reserve(uint64_t size) {
    constexpr uint64_t alignment = 64;
    if (size <= m_capacity) return;
    Release();
    const uint64_t capacity = (size + alignment - 1) / alignment * alignment;
    m_bytes.reset(static_cast<char*>(std::aligned_alloc(alignment, capacity)));
    if (!m_bytes) throw std::bad_alloc();
    m_capacity = capacity;
}

}  // namespace qve
