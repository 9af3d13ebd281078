#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace qve {

/// Bytes for decoded cells, aligned for vector stores. Grows without keeping its contents.
class DecodeBuffer {
public:
    /// Room for `size` bytes; what was there is lost if it must grow. Throws std::bad_alloc.
    void Reserve(uint64_t size);
    void Release() {
        m_bytes.reset();
        m_capacity = 0;
    }
    char* data() const { return m_bytes.get(); }
    uint64_t GetCapacity() const { return m_capacity; }

private:
    struct Free {
        void operator()(char* bytes) const { std::free(bytes); }
    };
    std::unique_ptr<char, Free> m_bytes;
    uint64_t m_capacity = 0;
};

}  // namespace qve
