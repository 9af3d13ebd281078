#include <cmath>

#include "primitives/transcendental.h"

namespace qve {
namespace {

struct sqrt_op {
    static constexpr const wchar_t* name = L"sqrt";
    template <class T>
    static T of(T x) {
        return std::sqrt(x);
    }
};

const register_real_function<sqrt_op> registered;

}  // namespace

void define_sqrt() {}

}  // namespace qve
