#include "primitives/date_addition.h"

namespace qve {
namespace {

struct addminute_op {
    static constexpr const wchar_t* name = L"addminute";
    static constexpr long long ticks = ticks_per_minute;
};

const register_maps<tick_addition<addminute_op>, add_clock_signatures, modes2> registered;

}  // namespace

void define_addminute() {}

}  // namespace qve
