#include "primitives/date_parts.h"

namespace qve {
namespace {

struct truncquarter_op {
    static constexpr const wchar_t* name = L"truncquarter";
    [[gnu::always_inline]] static unsigned of(unsigned day) {
        const calendar::civil_date c = civil(day);
        return first_day(c.year, (c.month - 1) / 3 * 3 + 1);
    }
};

const register_day_truncation<truncquarter_op> registered;

}  // namespace

void define_truncquarter() {}

}  // namespace qve
