#include <cmath>

#include "primitives/transcendental.h"

namespace qve {
namespace {

struct acos_op {
    static constexpr const wchar_t* name = L"acos";
    template <class T>
    static T of(T x) {
        return std::acos(x);
    }
};

const register_real_function<acos_op> registered;

}  // namespace

void define_acos() {}

}  // namespace qve
