#include <cmath>

#include "primitives/transcendental.h"

namespace qve {
namespace {

struct ln_op {
    static constexpr const wchar_t* name = L"ln";
    template <class T>
    static T of(T x) {
        return std::log(x);
    }
};

const register_real_function<ln_op> registered;

}  // namespace

void define_ln() {}

}  // namespace qve
