#include "primitives/comparison.h"

namespace qve {
namespace {

struct le_op {
    static constexpr const wchar_t* name = L"le";
    static constexpr bool equality = false;
    template <class T>
    [[gnu::always_inline]] static bool holds(T a, T b) {
        return a <= b;
    }
};

const register_comparison<le_op, strict_comparison> registered;

}  // namespace

void define_le() {}

}  // namespace qve
