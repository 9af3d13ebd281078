#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include "types/usrheap.h"

namespace qve {

/// Reads many entries of one heap in a loop: it keeps the window's address, so that an entry inside it costs no virtual
/// call. Made anew for each vector, on the heap's thread; nothing else may move the heap's stream meanwhile.
class heap_reader {
public:
    /// `heap` may be null: every token is null then.
    explicit heap_reader(const usrheap* heap);

    /// The bytes of an entry, without data (null pointer) for a null. With a heap that does not lie whole in the
    /// window, only valid until the next call.
    std::string_view operator[](unsigned long long token) const {
        if (token < m_begin || token >= m_end) return slow(token);
        const char* entry = m_base + token * m_stride;
        uint64_t length = 0;
        switch (m_prefix) {
            case 0:
                return {entry, m_stride};
            case 1:
                length = static_cast<unsigned char>(*entry);
                break;
            case 2: {
                uint16_t prefix;
                std::memcpy(&prefix, entry, sizeof prefix);
                length = prefix;
                break;
            }
            case 4: {
                uint32_t prefix;
                std::memcpy(&prefix, entry, sizeof prefix);
                length = prefix;
                break;
            }
            default:
                std::memcpy(&length, entry, sizeof length);
        }
        if (length > m_bytes - token - m_prefix) return slow(token);
        return {entry + m_prefix, length};
    }

    /// Asks for the cache line of an entry that will be read soon.
    void prefetch(unsigned long long token) const {
        if (token < m_end) __builtin_prefetch(m_base + token * m_stride);
    }

private:
    std::string_view slow(unsigned long long token) const;

    void look() const;

    const usrheap* m_heap;
    // What the window shows at present; it moves when an entry outside is asked for.
    mutable const char* m_base = nullptr;  // of token 0
    mutable uint64_t m_begin = 0;          // tokens from here
    mutable uint64_t m_end = 0;            // to here have their prefix in the window
    mutable uint64_t m_bytes = 0;          // bytes from m_base to the window's end
    uint64_t m_stride = 1;                 // bytes per token
    unsigned m_prefix = 0;
};

}  // namespace qve
