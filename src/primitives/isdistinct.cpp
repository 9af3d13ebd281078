#include "primitives/comparison.h"

namespace qve {
namespace {

struct isdistinct_op {
    static constexpr const wchar_t* name = L"isdistinct";
    [[gnu::always_inline]] static bool holds(bool distinct) { return distinct; }
};

const register_comparison<isdistinct_op, null_comparison> registered;

}  // namespace

void define_isdistinct() {}

}  // namespace qve
