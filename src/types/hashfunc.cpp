#include "types/hashfunc.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace qve {
namespace {

constexpr uint32_t golden_ratio = 0x9E3779B9;
constexpr size_t round_bytes = 12;

/// Of one text, or of as many as a vector has lanes.
template <class Word>
struct state {
    Word a;
    Word b;
    Word c;

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

template <class Word>
Word load(const char* p) {
    Word w;
    std::memcpy(&w, p, sizeof w);
    return w;
}
uint32_t word(const char* p) {
    return load<uint32_t>(p);
}

/// The words of a last round, of fewer bytes than there is room for. The low byte of the last word is kept for the
/// length of the whole.
struct last_round {
    uint32_t a, b, c;

    last_round(const char* p, size_t left, size_t length) {
        // Loads that overlap stay inside the text, and the bytes that they share are the same.
        uint64_t low = 0, high = 0;
        if (left >= 8) {
            low = load<uint64_t>(p);
            if (left > 8) high = load<uint64_t>(p + left - 8) >> (64 - 8 * (left - 8));
        } else if (left >= 4) {
            low = load<uint32_t>(p) | static_cast<uint64_t>(load<uint32_t>(p + left - 4)) << 8 * (left - 4);
        } else if (left > 0) {
            for (const size_t i : {size_t{0}, left / 2, left - 1}) {
                low |= static_cast<uint64_t>(static_cast<unsigned char>(p[i])) << 8 * i;
            }
        }
        a = static_cast<uint32_t>(low);
        b = static_cast<uint32_t>(low >> 32);
        c = (static_cast<uint32_t>(high) << 8) + static_cast<uint32_t>(length);
    }
};

constexpr size_t lanes = 4;
using words [[gnu::vector_size(lanes * sizeof(uint32_t))]] = uint32_t;

words loaded(const uint32_t (&lane)[lanes]) {
    return load<words>(reinterpret_cast<const char*>(lane));
}

/// What goes into one round of each lane; `ends` is all ones where the text ends with it.
struct round_words {
    uint32_t a[lanes], b[lanes], c[lanes], ends[lanes];
};

}  // namespace

unsigned hashfunc(const void* data, size_t length, unsigned seed) {
    static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "words are read as they lie");
    const auto* p = static_cast<const char*>(data);
    state<uint32_t> s{golden_ratio, golden_ratio, seed};
    size_t left = length;
    for (; left >= round_bytes; left -= round_bytes, p += round_bytes) {
        s.a += word(p);
        s.b += word(p + 4);
        s.c += word(p + 8);
        s.mix();
    }
    const last_round last(p, left, length);
    s.a += last.a;
    s.b += last.b;
    s.c += last.c;
    s.mix();
    return s.c;
}

void hashfunc(size_t count, const std::string_view* texts, unsigned* hashes, unsigned seed) {
    for (; count >= lanes; count -= lanes, texts += lanes, hashes += lanes) {
        size_t longest = 0;
        for (size_t i = 0; i < lanes; ++i) longest = std::max(longest, texts[i].size());
        state<words> s{words{} + golden_ratio, words{} + golden_ratio, words{} + seed};
        words result{};
        for (size_t at = 0; at <= longest; at += round_bytes) {
            round_words next{};
            for (size_t i = 0; i < lanes; ++i) {
                const std::string_view text = texts[i];
                if (at + round_bytes <= text.size()) {
                    const char* const p = text.data() + at;
                    next.a[i] = word(p);
                    next.b[i] = word(p + 4);
                    next.c[i] = word(p + 8);
                } else if (at <= text.size()) {
                    const last_round last(text.data() + at, text.size() - at, text.size());
                    next.a[i] = last.a;
                    next.b[i] = last.b;
                    next.c[i] = last.c;
                    next.ends[i] = ~0U;
                }
            }
            s.a += loaded(next.a);
            s.b += loaded(next.b);
            s.c += loaded(next.c);
            s.mix();
            result |= s.c & loaded(next.ends);
        }
        std::memcpy(hashes, &result, sizeof result);
    }
    for (size_t i = 0; i < count; ++i) hashes[i] = hashfunc(texts[i].data(), texts[i].size(), seed);
}

}  // namespace qve
