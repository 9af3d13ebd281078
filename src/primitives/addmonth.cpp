#include "primitives/date_addition.h"

namespace qve {
namespace {

struct addmonth_op {
    static constexpr const wchar_t* name = L"addmonth";
    static constexpr long long months = 1;
};

const register_maps<month_addition<addmonth_op>, add_month_signatures, modes2> registered;

}  // namespace

void define_addmonth() {}

}  // namespace qve
