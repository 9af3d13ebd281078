#include <cmath>

#include "primitives/transcendental.h"

namespace qve {
namespace {

struct cos_op {
    static constexpr const wchar_t* name = L"cos";
    template <class T>
    static T of(T x) {
        return std::cos(x);
    }
};

const register_real_function<cos_op> registered;

}  // namespace

void define_cos() {}

}  // namespace qve
