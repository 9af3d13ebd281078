#include "primitives/date_parts.h"

namespace qve {
namespace {

struct second_op {
    static constexpr const wchar_t* name = L"second";
    static constexpr long long ticks = ticks_per_second;
    static constexpr long long count = 60;
};

const register_clock_part<second_op> registered;

}  // namespace

void define_second() {}

}  // namespace qve
