#include "primitives/date_addition.h"

namespace qve {
namespace {

struct diffmonth_op {
    static constexpr const wchar_t* name = L"diffmonth";
    static int of(unsigned day) {
        const calendar::civil_date c = civil(day);
        return (c.year + (c.year < 1)) * 12 + c.month;
    }
};

const register_maps<day_difference<diffmonth_op>, diff_day_signatures, modes2> registered;

}  // namespace

void define_diffmonth() {}

}  // namespace qve
