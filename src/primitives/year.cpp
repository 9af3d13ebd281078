#include "primitives/date_parts.h"

namespace qve {
namespace {

struct year_op {
    static constexpr const wchar_t* name = L"year";
    [[gnu::always_inline]] static int of(unsigned day) { return civil(day).year; }
};

const register_day_part<year_op> registered;

}  // namespace

void define_year() {}

}  // namespace qve
