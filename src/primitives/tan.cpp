#include <cmath>

#include "primitives/transcendental.h"

namespace qve {
namespace {

struct tan_op {
    static constexpr const wchar_t* name = L"tan";
    template <class T>
    static T of(T x) {
        return std::tan(x);
    }
};

const register_real_function<tan_op> registered;

}  // namespace

void define_tan() {}

}  // namespace qve
