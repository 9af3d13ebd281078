#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qve {

namespace detail {

inline uint64_t fold_product(uint64_t a, uint64_t b) {
    const auto product = static_cast<unsigned __int128>(a) * b;
    return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}
inline uint64_t word64(const char* p) {
    uint64_t w;
    std::memcpy(&w, p, sizeof w);
    return w;
}
inline uint64_t word32(const char* p) {
    uint32_t w;
    std::memcpy(&w, p, sizeof w);
    return w;
}

}  // namespace detail

/// A hash of bytes for tables that live no longer than the process: `seed` should be of its own, so that no text can be
/// made to collide. Short texts, which nearly all values are, cost two multiplications and no loop.
inline uint32_t bytes_hash(const char* p, size_t length, uint64_t seed) {
    constexpr uint64_t odd1 = 0xA0761D6478BD642F, odd2 = 0xE7037ED1A0B428DB;
    uint64_t a = 0, b = 0;
    const char* const end = p + length;
    if (length > 16) {
        for (; end - p > 16; p += 16)
            seed = detail::fold_product(detail::word64(p) ^ odd1, detail::word64(p + 8) ^ seed);
        // The last 16 bytes, some of which may have been read already.
        a = detail::word64(end - 16);
        b = detail::word64(end - 8);
    } else if (length >= 8) {
        a = detail::word64(p);
        b = detail::word64(end - 8);
    } else if (length >= 4) {
        a = detail::word32(p);
        b = detail::word32(end - 4);
    } else if (length > 0) {
        a = static_cast<unsigned char>(p[0]) | static_cast<uint64_t>(static_cast<unsigned char>(p[length / 2])) << 8 |
            static_cast<uint64_t>(static_cast<unsigned char>(end[-1])) << 16;
    }
    const uint64_t hash = detail::fold_product(detail::fold_product(a ^ odd1, b ^ seed) ^ odd2, length ^ odd1);
    return static_cast<uint32_t>(hash ^ hash >> 32);
}

}  // namespace qve
