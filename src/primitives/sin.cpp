#include <cmath>

#include "primitives/transcendental.h"

namespace qve {
namespace {

struct sin_op {
    static constexpr const wchar_t* name = L"sin";
    template <class T>
    static T of(T x) {
        return std::sin(x);
    }
};

const register_real_function<sin_op> registered;

}  // namespace

void define_sin() {}

}  // namespace qve
