#include "primitives/date_addition.h"

namespace qve {
namespace {

struct diffday_op {
    static constexpr const wchar_t* name = L"diffday";
    static constexpr long long ticks = ticks_per_day;
    static constexpr long long origin = 0;
};

const register_maps<tick_difference<diffday_op>, diff_clock_signatures, modes2> registered;

}  // namespace

void define_diffday() {}

}  // namespace qve
