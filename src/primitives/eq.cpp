#include "primitives/comparison.h"

namespace qve {
namespace {

struct eq_op {
    static constexpr const wchar_t* name = L"eq";
    static constexpr bool equality = true;
    template <class T>
    [[gnu::always_inline]] static bool holds(T a, T b) {
        return a == b;
    }
};

const register_comparison<eq_op, strict_comparison> registered;

}  // namespace

void define_eq() {}

}  // namespace qve
