#include "primitives/date_addition.h"

namespace qve {
namespace {

struct diffsecond_op {
    static constexpr const wchar_t* name = L"diffsecond";
    static constexpr long long ticks = ticks_per_second;
    static constexpr long long origin = 0;
};

const register_maps<tick_difference<diffsecond_op>, diff_clock_signatures, modes2> registered;

}  // namespace

void define_diffsecond() {}

}  // namespace qve
