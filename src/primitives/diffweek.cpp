#include "primitives/date_addition.h"

namespace qve {
namespace {

struct diffweek_op {
    static constexpr const wchar_t* name = L"diffweek";
    static constexpr long long ticks = 7 * ticks_per_day;
    static constexpr long long origin = 2 * ticks_per_day;
};

const register_maps<tick_difference<diffweek_op>, diff_clock_signatures, modes2> registered;

}  // namespace

void define_diffweek() {}

}  // namespace qve
