#include "primitives/date_parts.h"

namespace qve {
namespace {

struct weekday_op {
    static constexpr const wchar_t* name = L"weekday";
    [[gnu::always_inline]] static int of(unsigned day) { return static_cast<int>((day + 2) % 7) + 1; }
};

const register_day_part<weekday_op> registered;

}  // namespace

void define_weekday() {}

}  // namespace qve
