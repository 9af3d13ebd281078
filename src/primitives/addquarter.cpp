#include "primitives/date_addition.h"

namespace qve {
namespace {

struct addquarter_op {
    static constexpr const wchar_t* name = L"addquarter";
    static constexpr long long months = 3;
};

const register_maps<month_addition<addquarter_op>, add_month_signatures, modes2> registered;

}  // namespace

void define_addquarter() {}

}  // namespace qve
