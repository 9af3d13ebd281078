#include "primitives/date_addition.h"

namespace qve {
namespace {

struct addyear_op {
    static constexpr const wchar_t* name = L"addyear";
    static constexpr long long months = 12;
};

const register_maps<month_addition<addyear_op>, add_month_signatures, modes2> registered;

}  // namespace

void define_addyear() {}

}  // namespace qve
