#include "primitives/date_parts.h"

namespace qve {
namespace {

struct month_op {
    static constexpr const wchar_t* name = L"month";
    [[gnu::always_inline]] static int of(unsigned day) { return civil(day).month; }
};

const register_day_part<month_op> registered;

}  // namespace

void define_month() {}

}  // namespace qve
