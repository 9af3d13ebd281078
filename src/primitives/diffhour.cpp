#include "primitives/date_addition.h"

namespace qve {
namespace {

struct diffhour_op {
    static constexpr const wchar_t* name = L"diffhour";
    static constexpr long long ticks = ticks_per_hour;
    static constexpr long long origin = 0;
};

const register_maps<tick_difference<diffhour_op>, diff_clock_signatures, modes2> registered;

}  // namespace

void define_diffhour() {}

}  // namespace qve
