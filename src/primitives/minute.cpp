#include "primitives/date_parts.h"

namespace qve {
namespace {

struct minute_op {
    static constexpr const wchar_t* name = L"minute";
    static constexpr long long ticks = ticks_per_minute;
    static constexpr long long count = 60;
};

const register_clock_part<minute_op> registered;

}  // namespace

void define_minute() {}

}  // namespace qve
