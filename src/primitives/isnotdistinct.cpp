#include "primitives/comparison.h"

namespace qve {
namespace {

struct isnotdistinct_op {
    static constexpr const wchar_t* name = L"isnotdistinct";
    [[gnu::always_inline]] static bool holds(bool distinct) { return !distinct; }
};

const register_comparison<isnotdistinct_op, null_comparison> registered;

}  // namespace

void define_isnotdistinct() {}

}  // namespace qve
