#include "primitives/introsort.h"

#include <tbb/parallel_invoke.h>

#include <algorithm>
#include <bit>
#include <utility>

namespace qve {
namespace {

// Shorter ranges are left to the final insertion sort.
constexpr size_t short_range = 17;
// A half of fewer keys is not worth a task.
constexpr size_t task_size = 1 << 13;

// Keys and index as one sequence of pairs.
template <class Key, class Index>
struct pairs {
    Key* keys;
    Index* index;

    void swap(size_t a, size_t b) const {
        std::swap(keys[a], keys[b]);
        if (index) std::swap(index[a], index[b]);
    }
};

template <class Key, class Index>
void sift_down(const pairs<Key, Index>& p, size_t first, size_t root, size_t n) {
    for (size_t child; (child = 2 * root + 1) < n; root = child) {
        if (child + 1 < n && p.keys[first + child] < p.keys[first + child + 1]) ++child;
        if (!(p.keys[first + root] < p.keys[first + child])) return;
        p.swap(first + root, first + child);
    }
}

template <class Key, class Index>
void heapsort(const pairs<Key, Index>& p, size_t first, size_t last) {
    const size_t n = last - first;
    for (size_t root = n / 2; root-- > 0;) sift_down(p, first, root, n);
    for (size_t end = n; end-- > 1;) {
        p.swap(first, first + end);
        sift_down(p, first, 0, end);
    }
}

template <class Key>
Key median(Key a, Key b, Key c) {
    return std::max(std::min(a, b), std::min(std::max(a, b), c));
}

// Returns where the upper part begins: keys before it are at most the pivot, keys from it on at least. Both parts are
// not empty, as the pivot is the median of three keys of the range.
template <class Key, class Index>
size_t partition(const pairs<Key, Index>& p, size_t first, size_t last) {
    const Key pivot = median(p.keys[first], p.keys[first + (last - first) / 2], p.keys[last - 1]);
    size_t low = first;
    size_t high = last - 1;
    while (true) {
        while (p.keys[low] < pivot) ++low;
        while (pivot < p.keys[high]) --high;
        if (low >= high) return low == first ? first + 1 : low;
        p.swap(low++, high--);
    }
}

template <class Key, class Index>
void sort_range(unsigned workers, unsigned depth, const pairs<Key, Index>& p, size_t first, size_t last) {
    while (last - first >= short_range) {
        if (depth-- == 0) {
            heapsort(p, first, last);
            return;
        }
        const size_t middle = partition(p, first, last);
        const size_t total = last - first;
        const size_t left = middle - first;
        const size_t right = last - middle;
        if (workers >= 2 && std::min(left, right) >= task_size) {
            const auto share = [&](size_t part) { return std::max(1U, static_cast<unsigned>(workers * part / total)); };
            tbb::task_group_context context;
            tbb::parallel_invoke([&] { sort_range(share(left), depth, p, first, middle); },
                                 [&] { sort_range(share(right), depth, p, middle, last); }, context);
            return;
        }
        // The smaller half recursively, so that the stack stays shallow.
        if (left < right) {
            sort_range(1, depth, p, first, middle);
            first = middle;
        } else {
            sort_range(1, depth, p, middle, last);
            last = middle;
        }
    }
}

template <class Key, class Index>
void insertion_sort(const pairs<Key, Index>& p, size_t n) {
    for (size_t i = 1; i < n; ++i) {
        const Key key = p.keys[i];
        if (!(key < p.keys[i - 1])) continue;
        const Index position = p.index ? p.index[i] : Index();
        size_t hole = i;
        for (; hole > 0 && key < p.keys[hole - 1]; --hole) {
            p.keys[hole] = p.keys[hole - 1];
            if (p.index) p.index[hole] = p.index[hole - 1];
        }
        p.keys[hole] = key;
        if (p.index) p.index[hole] = position;
    }
}

}  // namespace

template <class Key, class Index>
void introsort(unsigned workers, size_t n, Key* keys, Index* index) {
    if (n < 2) return;
    const pairs<Key, Index> p{keys, index};
    sort_range(workers, 2 * (static_cast<unsigned>(std::bit_width(n)) - 1), p, 0, n);
    insertion_sort(p, n);
}

#define QVE_INTROSORT(Key)                                            \
    template void introsort(unsigned, size_t, Key*, unsigned char*);  \
    template void introsort(unsigned, size_t, Key*, unsigned short*); \
    template void introsort(unsigned, size_t, Key*, unsigned*);       \
    template void introsort(unsigned, size_t, Key*, unsigned long long*);
QVE_INTROSORT(unsigned char)
QVE_INTROSORT(unsigned short)
QVE_INTROSORT(unsigned)
QVE_INTROSORT(unsigned long long)
#undef QVE_INTROSORT

}  // namespace qve
