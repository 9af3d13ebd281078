#include "primitives/date_addition.h"

namespace qve {
namespace {

struct addday_op {
    static constexpr const wchar_t* name = L"addday";
    static constexpr long long ticks = ticks_per_day;
};

const register_maps<tick_addition<addday_op>, add_day_signatures, modes2> registered;

}  // namespace

void define_addday() {}

}  // namespace qve
