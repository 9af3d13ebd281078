#include "primitives/date_addition.h"

namespace qve {
namespace {

struct addweek_op {
    static constexpr const wchar_t* name = L"addweek";
    static constexpr long long ticks = 7 * ticks_per_day;
};

const register_maps<tick_addition<addweek_op>, add_day_signatures, modes2> registered;

}  // namespace

void define_addweek() {}

}  // namespace qve
