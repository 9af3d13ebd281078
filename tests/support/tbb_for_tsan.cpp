// Part of the tests under the thread sanitizer, which cannot see into the libraries of oneTBB: how they order tasks,
// nor how memory goes from one thread to the next, and would call each a race. So tasks run on the thread that waits
// for them, and memory is the sanitizer's own. oneTBB takes these four functions from a shared library that is already
// loaded, before it looks for its own.

#include <tbb/global_control.h>

#include <cstddef>
#include <cstdlib>

namespace {

const tbb::global_control s_oneThread(tbb::global_control::max_allowed_parallelism, 1);

}  // namespace

extern "C" {

void* scalable_malloc(std::size_t size) {
    return std::malloc(size);
}

void scalable_free(void* block) {
    std::free(block);
}

void* scalable_aligned_malloc(std::size_t size, std::size_t alignment) {
    return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

void scalable_aligned_free(void* block) {
    std::free(block);
}

}  // extern "C"
