#include "primitives/comparison.h"

namespace qve {
namespace {

struct ne_op {
    static constexpr const wchar_t* name = L"ne";
    static constexpr bool equality = true;
    template <class T>
    [[gnu::always_inline]] static bool holds(T a, T b) {
        return a != b;
    }
};

const register_comparison<ne_op, strict_comparison> registered;

}  // namespace

void define_ne() {}

}  // namespace qve
