#include "primitives/date_parts.h"

namespace qve {
namespace {

struct truncyear_op {
    static constexpr const wchar_t* name = L"truncyear";
    [[gnu::always_inline]] static unsigned of(unsigned day) { return first_day(civil(day).year, 1); }
};

const register_day_truncation<truncyear_op> registered;

}  // namespace

void define_truncyear() {}

}  // namespace qve
