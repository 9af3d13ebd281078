#include "algebra/radix_sort.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>
#include <vector>

#include "algebra/OperatorProgressCallback.h"

namespace qve {

namespace {

constexpr unsigned rowBits = 32;
constexpr unsigned wordBits = 32;
// Fewer items than this are sorted faster by comparing.
constexpr uint64_t fewItems = 512;
constexpr uint64_t blockItems = 1u << 20;
// Items of so many bytes, and as many of scratch, stay in the second-level cache: they are sorted from the lowest digit
// up. More are divided by their highest digit first.
constexpr uint64_t cachedBytes = 1u << 18;
// Of a long key so many bits are sorted by digits: few items have more in common.
constexpr unsigned digitBitsOfLongKey = 22;
constexpr unsigned mostDigitBits = 11;
constexpr unsigned buckets = 1u << mostDigitBits;
// Items of a bucket on their way to it.
constexpr unsigned lineItems = 8;

// The key of an item as one number.
uint64_t KeyOf(uint64_t item) {
    return item >> rowBits;
}
unsigned __int128 KeyOf(const wide_item& item) {
    return static_cast<unsigned __int128>(item.high) << wordBits | item.low >> rowBits;
}

bool Less(uint64_t a, uint64_t b) {
    return a < b;
}
bool Less(const wide_item& a, const wide_item& b) {
    return a.high != b.high ? a.high < b.high : a.low < b.low;
}

unsigned BitWidth(uint64_t key) {
    return static_cast<unsigned>(std::bit_width(key));
}
unsigned BitWidth(unsigned __int128 key) {
    const auto high = static_cast<uint64_t>(key >> 64);
    return high != 0 ? 64 + BitWidth(high) : BitWidth(static_cast<uint64_t>(key));
}

/// The bits of a key from `low` to `low` + `bits` - 1.
struct DigitRange {
    unsigned low;
    unsigned bits;

    template <class Item>
    unsigned Of(const Item& item) const {
        return static_cast<unsigned>(KeyOf(item) >> low) & ((1u << bits) - 1);
    }
};

template <class Item>
class RadixSorter {
public:
    explicit RadixSorter(const ProgressCallback* progress) : m_progress(progress) {}

    // Sorts the `count` items at `items` by the bits of their keys below `bits`, in which alone they differ, to `items`
    // or, with `crossing`, to `scratch`.
    void Sort(uint64_t count, Item* items, Item* scratch, unsigned bits, bool crossing) {
        if (bits == 0) {
            if (crossing) std::copy_n(items, count, scratch);
        } else if (count < fewItems) {
            // An item holds its number too, so that equal keys stay in order where numbers ascend.
            std::sort(items, items + count, [](const Item& a, const Item& b) { return Less(a, b); });
            if (crossing) std::copy_n(items, count, scratch);
        } else if (count <= cachedItems) {
            SortCached(count, items, scratch, bits, crossing);
        } else {
            Divide(count, items, scratch, bits, crossing);
        }
    }

    // The number of bits, from the lowest up, in which the keys of the items differ.
    unsigned DifferingBits(uint64_t count, const Item* items) const {
        const auto first = KeyOf(items[0]);
        auto difference = first ^ first;
        for (uint64_t block = 0; block < count; block += blockItems) {
            OperatorProgressCallback::Check(m_progress);
            const uint64_t end = std::min(count, block + blockItems);
            for (uint64_t i = block; i < end; ++i) difference |= KeyOf(items[i]) ^ first;
        }
        return BitWidth(difference);
    }

private:
    static constexpr uint64_t cachedItems = cachedBytes / sizeof(Item);
    static constexpr unsigned mostSortedBits = sizeof(Item) > sizeof(uint64_t) ? digitBitsOfLongKey : wordBits;

    void SortCached(uint64_t count, Item* items, Item* scratch, unsigned bits, bool crossing) {
        const unsigned most = count < cachedItems / 4 ? 8 : mostDigitBits;
        const unsigned sorted = std::min(bits, mostSortedBits);
        const unsigned rest = bits - sorted;
        const unsigned digits = (sorted + most - 1) / most;
        Item* from = items;
        Item* to = scratch;
        for (unsigned d = 0; d < digits; ++d) {
            const unsigned low = d * sorted / digits;
            const DigitRange digit{rest + low, (d + 1) * sorted / digits - low};
            std::array<unsigned, buckets> next;
            std::fill_n(next.begin(), size_t{1} << digit.bits, 0u);
            for (uint64_t i = 0; i < count; ++i) ++next[digit.Of(from[i])];
            unsigned before = 0;
            for (size_t b = 0; b < size_t{1} << digit.bits; ++b) before += std::exchange(next[b], before);
            for (uint64_t i = 0; i < count; ++i) to[next[digit.Of(from[i])]++] = from[i];
            std::swap(from, to);
        }
        if (rest > 0) SortTies(count, from, to, rest);
        Item* const wanted = crossing ? scratch : items;
        if (from != wanted) std::copy_n(from, count, wanted);
    }

    // Items are in the order of their keys without the lowest `bits` bits.
    void SortTies(uint64_t count, Item* items, Item* scratch, unsigned bits) {
        for (uint64_t begin = 0; begin < count;) {
            const auto key = KeyOf(items[begin]) >> bits;
            uint64_t end = begin + 1;
            while (end < count && KeyOf(items[end]) >> bits == key) ++end;
            if (end - begin > 1) Sort(end - begin, items + begin, scratch + begin, bits, false);
            begin = end;
        }
    }

    // To buckets of the highest digit, each a part of `scratch`, and then each to its order.
    void Divide(uint64_t count, Item* items, Item* scratch, unsigned bits, bool crossing) {
        const auto wanted = static_cast<unsigned>(std::bit_width(count / cachedItems)) + 2;
        const unsigned digitBits = std::min({bits, wanted, mostDigitBits});
        const DigitRange digit{bits - digitBits, digitBits};
        const size_t used = size_t{1} << digitBits;
        std::vector<uint64_t> ends(used);
        for (uint64_t block = 0; block < count; block += blockItems) {
            OperatorProgressCallback::Check(m_progress);
            const uint64_t end = std::min(count, block + blockItems);
            for (uint64_t i = block; i < end; ++i) ++ends[digit.Of(items[i])];
        }
        uint64_t before = 0;
        for (uint64_t& end : ends) before += std::exchange(end, before);
        Distribute(count, items, scratch, digit, ends);
        for (size_t b = 0; b < used; ++b) {
            const uint64_t begin = b == 0 ? 0 : ends[b - 1];
            const uint64_t length = ends[b] - begin;
            if (length == 0) continue;
            OperatorProgressCallback::Check(m_progress);
            // Many items of one digit may agree in further bits.
            const unsigned differing = length > cachedItems ? DifferingBits(length, scratch + begin) : digit.low;
            Sort(length, scratch + begin, items + begin, differing, !crossing);
        }
    }

    // `next` has for each digit the place of its first item, and then the one behind its last. Items go by way of lines
    // that stay in the cache, since writing to so many places at once would need a page table entry for each.
    void Distribute(uint64_t count, const Item* from, Item* to, DigitRange digit, std::vector<uint64_t>& next) {
        m_lines.resize(next.size() * lineItems);
        std::vector<unsigned char> waiting(next.size());
        for (uint64_t block = 0; block < count; block += blockItems) {
            OperatorProgressCallback::Check(m_progress);
            const uint64_t end = std::min(count, block + blockItems);
            for (uint64_t i = block; i < end; ++i) {
                const unsigned bucket = digit.Of(from[i]);
                Item* const line = m_lines.data() + size_t{bucket} * lineItems;
                line[waiting[bucket]] = from[i];
                if (++waiting[bucket] == lineItems) {
                    std::copy_n(line, lineItems, to + next[bucket]);
                    next[bucket] += lineItems;
                    waiting[bucket] = 0;
                }
            }
        }
        for (size_t bucket = 0; bucket < next.size(); ++bucket) {
            std::copy_n(m_lines.data() + bucket * lineItems, waiting[bucket], to + next[bucket]);
            next[bucket] += waiting[bucket];
        }
    }

    const ProgressCallback* const m_progress;
    std::vector<Item> m_lines;
};

template <class Item>
void SortItems(uint64_t count, Item* items, Item* scratch, const ProgressCallback* progress) {
    if (count < 2) return;
    RadixSorter<Item> sorter(progress);
    sorter.Sort(count, items, scratch, sorter.DifferingBits(count, items), false);
}

}  // namespace

void radix_sort(uint64_t count, uint64_t* items, uint64_t* scratch, const ProgressCallback* progress) {
    SortItems(count, items, scratch, progress);
}

void radix_sort(uint64_t count, wide_item* items, wide_item* scratch, const ProgressCallback* progress) {
    SortItems(count, items, scratch, progress);
}

// From the highest digit down: counts the items that agree with the answer in all digits before.
uint64_t radix_select(uint64_t count, const uint64_t* items, uint64_t rank, const ProgressCallback* progress) {
    uint64_t answer = 0;
    for (unsigned known = wordBits; known > 0;) {
        const unsigned low = known > mostDigitBits ? known - mostDigitBits : 0;
        const DigitRange digit{low, known - low};
        std::vector<uint64_t> counts(size_t{1} << digit.bits);
        for (uint64_t block = 0; block < count; block += blockItems) {
            OperatorProgressCallback::Check(progress);
            const uint64_t end = std::min(count, block + blockItems);
            for (uint64_t i = block; i < end; ++i) {
                const uint64_t word = KeyOf(items[i]);
                counts[digit.Of(items[i])] += word >> known == answer >> known;
            }
        }
        uint64_t value = 0;
        while (rank >= counts[value]) rank -= counts[value++];
        answer |= value << low;
        known = low;
    }
    return answer;
}

}  // namespace qve
