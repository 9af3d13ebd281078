#include "primitives/date_addition.h"

namespace qve {
namespace {

struct diffmillisecond_op {
    static constexpr const wchar_t* name = L"diffmillisecond";
    static constexpr long long ticks = ticks_per_millisecond;
    static constexpr long long origin = 0;
};

const register_maps<tick_difference<diffmillisecond_op>, diff_clock_signatures, modes2> registered;

}  // namespace

void define_diffmillisecond() {}

}  // namespace qve
