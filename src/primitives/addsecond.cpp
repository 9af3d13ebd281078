#include "primitives/date_addition.h"

namespace qve {
namespace {

struct addsecond_op {
    static constexpr const wchar_t* name = L"addsecond";
    static constexpr long long ticks = ticks_per_second;
};

const register_maps<tick_addition<addsecond_op>, add_clock_signatures, modes2> registered;

}  // namespace

void define_addsecond() {}

}  // namespace qve
