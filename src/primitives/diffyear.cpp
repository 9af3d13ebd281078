#include "primitives/date_addition.h"

namespace qve {
namespace {

struct diffyear_op {
    static constexpr const wchar_t* name = L"diffyear";
    static int of(unsigned day) {
        const calendar::civil_date c = civil(day);
        return c.year + (c.year < 1);
    }
};

const register_maps<day_difference<diffyear_op>, diff_day_signatures, modes2> registered;

}  // namespace

void define_diffyear() {}

}  // namespace qve
