#include "primitives/date_addition.h"

namespace qve {
namespace {

struct addhour_op {
    static constexpr const wchar_t* name = L"addhour";
    static constexpr long long ticks = ticks_per_hour;
};

const register_maps<tick_addition<addhour_op>, add_clock_signatures, modes2> registered;

}  // namespace

void define_addhour() {}

}  // namespace qve
