#include "primitives/date_parts.h"

namespace qve {
namespace {

struct hour_op {
    static constexpr const wchar_t* name = L"hour";
    static constexpr long long ticks = ticks_per_hour;
    static constexpr long long count = 24;
};

const register_clock_part<hour_op> registered;

}  // namespace

void define_hour() {}

}  // namespace qve
