#include "primitives/date_parts.h"

namespace qve {
namespace {

struct millisecond_op {
    static constexpr const wchar_t* name = L"millisecond";
    static constexpr long long ticks = ticks_per_millisecond;
    static constexpr long long count = 1000;
};

const register_clock_part<millisecond_op> registered;

}  // namespace

void define_millisecond() {}

}  // namespace qve
