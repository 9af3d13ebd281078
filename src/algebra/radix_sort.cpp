#include "algebra/radix_sort.h"

#include <algorithm>
#include <utility>

#include "algebra/OperatorProgressCallback.h"

namespace qve {

namespace {

constexpr unsigned digitBits = 11;
constexpr unsigned digits = 3;
constexpr unsigned buckets = 1u << digitBits;
constexpr unsigned lowBit = 32;
// Fewer items than this are sorted faster by comparing.
constexpr uint64_t fewItems = 512;
constexpr uint64_t blockItems = 1u << 20;

unsigned Digit(uint64_t item, unsigned digit) {
    return static_cast<unsigned>(item >> (lowBit + digit * digitBits)) & (buckets - 1);
}

}  // namespace

void radix_sort(uint64_t count, uint64_t* items, uint64_t* scratch, const ProgressCallback* progress) {
    if (count < fewItems) {
        std::sort(items, items + count);
        return;
    }
    static_assert(digits * digitBits >= 32);
    uint64_t places[digits][buckets] = {};
    for (uint64_t block = 0; block < count; block += blockItems) {
        OperatorProgressCallback::Check(progress);
        const uint64_t end = std::min(count, block + blockItems);
        for (uint64_t i = block; i < end; ++i) {
            for (unsigned d = 0; d < digits; ++d) ++places[d][Digit(items[i], d)];
        }
    }
    uint64_t* from = items;
    uint64_t* to = scratch;
    for (unsigned d = 0; d < digits; ++d) {
        if (places[d][Digit(items[0], d)] == count) continue;  // all items have the same digit
        uint64_t next = 0;
        for (uint64_t& place : places[d]) next += std::exchange(place, next);
        for (uint64_t block = 0; block < count; block += blockItems) {
            OperatorProgressCallback::Check(progress);
            const uint64_t end = std::min(count, block + blockItems);
            for (uint64_t i = block; i < end; ++i) to[places[d][Digit(from[i], d)]++] = from[i];
        }
        std::swap(from, to);
    }
    if (from != items) std::copy_n(from, count, items);
}

// From the highest digit down: counts the items that agree with the answer in all digits before.
uint64_t radix_select(uint64_t count, const uint64_t* items, uint64_t rank, const ProgressCallback* progress) {
    uint64_t answer = 0;
    for (unsigned d = digits; d-- > 0;) {
        const unsigned known = (d + 1) * digitBits;
        uint64_t places[buckets] = {};
        for (uint64_t block = 0; block < count; block += blockItems) {
            OperatorProgressCallback::Check(progress);
            const uint64_t end = std::min(count, block + blockItems);
            for (uint64_t i = block; i < end; ++i) {
                const uint64_t word = items[i] >> lowBit;
                places[Digit(items[i], d)] += word >> known == answer >> known;
            }
        }
        uint64_t digit = 0;
        while (rank >= places[digit]) rank -= places[digit++];
        answer |= digit << (d * digitBits);
    }
    return answer;
}

}  // namespace qve
