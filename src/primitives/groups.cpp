#include "primitives/groups.h"

#include <algorithm>

#include "primitives/vector_level.h"

namespace qve {
namespace {

[[gnu::always_inline]] inline unsigned highest_of(unsigned n, unsigned const* groups) {
    unsigned highest = 0;
    for (unsigned i = 0; i < n; ++i) highest = std::max(highest, groups[i]);
    return highest;
}
unsigned highest_scalar(unsigned n, unsigned const* groups) {
    return highest_of(n, groups);
}
[[gnu::target("avx2")]] unsigned highest_avx2(unsigned n, unsigned const* groups) {
    return highest_of(n, groups);
}

}  // namespace

unsigned highest_group(unsigned n, unsigned const* groups, unsigned const* sel) {
    if (!sel) return current_vector_level() >= vector_level::avx2 ? highest_avx2(n, groups) : highest_scalar(n, groups);
    unsigned highest = 0;
    for (unsigned k = 0; k < n; ++k) highest = std::max(highest, groups[sel[k]]);
    return highest;
}

}  // namespace qve
