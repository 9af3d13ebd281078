#include "primitives/within_cutoff.h"

#include "primitives/vector_level.h"

namespace qve {
namespace {

// Marks as wide as the values, so that a comparison is one instruction for each register of them.
template <bool Below>
[[gnu::always_inline]] inline bool any_other(const double* values, unsigned count, double cutoff) {
    long long found = 0;
    for (unsigned i = 0; i < count; ++i) found |= (Below ? values[i] < cutoff : values[i] > cutoff) ? 0LL : -1LL;
    return found != 0;
}

template <bool Below>
[[gnu::target("avx2")]] bool any_other_avx2(const double* values, unsigned count, double cutoff) {
    return any_other<Below>(values, count, cutoff);
}

}  // namespace

bool any_not_below(const double* values, unsigned count, double cutoff) {
    return current_vector_level() >= vector_level::avx2 ? any_other_avx2<true>(values, count, cutoff)
                                                        : any_other<true>(values, count, cutoff);
}

bool any_not_above(const double* values, unsigned count, double cutoff) {
    return current_vector_level() >= vector_level::avx2 ? any_other_avx2<false>(values, count, cutoff)
                                                        : any_other<false>(values, count, cutoff);
}

}  // namespace qve
