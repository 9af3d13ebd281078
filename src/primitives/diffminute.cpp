#include "primitives/date_addition.h"

namespace qve {
namespace {

struct diffminute_op {
    static constexpr const wchar_t* name = L"diffminute";
    static constexpr long long ticks = ticks_per_minute;
    static constexpr long long origin = 0;
};

const register_maps<tick_difference<diffminute_op>, diff_clock_signatures, modes2> registered;

}  // namespace

void define_diffminute() {}

}  // namespace qve
