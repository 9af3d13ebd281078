#include "types/hashfunc.h"

#include <cstdint>
#include <cstring>

namespace qve {
namespace {

struct state {
    uint32_t a = 0x9E3779B9;
    uint32_t b = 0x9E3779B9;
    uint32_t c;

    void mix() {
        a -= b;
        a -= c;
        a ^= c >> 13;
        b -= c;
        b -= a;
        b ^= a << 8;
        c -= a;
        c -= b;
        c ^= b >> 13;
        a -= b;
        a -= c;
        a ^= c >> 12;
        b -= c;
        b -= a;
        b ^= a << 16;
        c -= a;
        c -= b;
        c ^= b >> 5;
        a -= b;
        a -= c;
        a ^= c >> 3;
        b -= c;
        b -= a;
        b ^= a << 10;
        c -= a;
        c -= b;
        c ^= b >> 15;
    }
};

uint32_t word(const char* p) {
    uint32_t w;
    std::memcpy(&w, p, sizeof w);
    return w;
}

}  // namespace

unsigned hashfunc(const void* data, size_t length, unsigned seed) {
    static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "words are read as they lie");
    const auto* p = static_cast<const char*>(data);
    state s{.c = seed};
    size_t left = length;
    for (; left >= 12; left -= 12, p += 12) {
        s.a += word(p);
        s.b += word(p + 4);
        s.c += word(p + 8);
        s.mix();
    }
    // The low byte of the last word is kept for the length.
    char rest[12] = {};
    if (left) std::memcpy(rest, p, left);
    s.a += word(rest);
    s.b += word(rest + 4);
    s.c += (word(rest + 8) << 8) + static_cast<uint32_t>(length);
    s.mix();
    return s.c;
}

}  // namespace qve
