#include "primitives/date_addition.h"

namespace qve {
namespace {

struct addmillisecond_op {
    static constexpr const wchar_t* name = L"addmillisecond";
    static constexpr long long ticks = ticks_per_millisecond;
};

const register_maps<tick_addition<addmillisecond_op>, add_clock_signatures, modes2> registered;

}  // namespace

void define_addmillisecond() {}

}  // namespace qve
