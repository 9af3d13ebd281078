#include <cmath>

#include "primitives/transcendental.h"

namespace qve {
namespace {

struct exp_op {
    static constexpr const wchar_t* name = L"exp";
    template <class T>
    static T of(T x) {
        return std::exp(x);
    }
};

const register_real_function<exp_op> registered;

}  // namespace

void define_exp() {}

}  // namespace qve
