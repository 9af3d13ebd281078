#include <cmath>

#include "primitives/transcendental.h"

namespace qve {
namespace {

struct atan_op {
    static constexpr const wchar_t* name = L"atan";
    template <class T>
    static T of(T x) {
        return std::atan(x);
    }
};

const register_real_function<atan_op> registered;

}  // namespace

void define_atan() {}

}  // namespace qve
