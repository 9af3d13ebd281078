#include "primitives/date_addition.h"

namespace qve {
namespace {

struct diffquarter_op {
    static constexpr const wchar_t* name = L"diffquarter";
    static int of(unsigned day) {
        const calendar::civil_date c = civil(day);
        return (c.year + (c.year < 1)) * 4 + (c.month - 1) / 3;
    }
};

const register_maps<day_difference<diffquarter_op>, diff_day_signatures, modes2> registered;

}  // namespace

void define_diffquarter() {}

}  // namespace qve
