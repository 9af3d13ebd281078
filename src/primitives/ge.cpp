#include "primitives/comparison.h"

namespace qve {
namespace {

struct ge_op {
    static constexpr const wchar_t* name = L"ge";
    static constexpr bool equality = false;
    template <class T>
    [[gnu::always_inline]] static bool holds(T a, T b) {
        return a >= b;
    }
};

const register_comparison<ge_op, strict_comparison> registered;

}  // namespace

void define_ge() {}

}  // namespace qve
