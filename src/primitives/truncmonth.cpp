#include "primitives/date_parts.h"

namespace qve {
namespace {

struct truncmonth_op {
    static constexpr const wchar_t* name = L"truncmonth";
    [[gnu::always_inline]] static unsigned of(unsigned day) {
        const calendar::civil_date c = civil(day);
        return first_day(c.year, c.month);
    }
};

const register_day_truncation<truncmonth_op> registered;

}  // namespace

void define_truncmonth() {}

}  // namespace qve
