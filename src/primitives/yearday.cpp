#include "primitives/date_parts.h"

namespace qve {
namespace {

struct yearday_op {
    static constexpr const wchar_t* name = L"yearday";
    [[gnu::always_inline]] static int of(unsigned day) {
        return static_cast<int>(day - first_day(civil(day).year, 1)) + 1;
    }
};

const register_day_part<yearday_op> registered;

}  // namespace

void define_yearday() {}

}  // namespace qve
