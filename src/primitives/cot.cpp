#include <cmath>

#include "primitives/transcendental.h"

namespace qve {
namespace {

struct cot_op {
    static constexpr const wchar_t* name = L"cot";
    template <class T>
    static T of(T x) {
        return T(1) / std::tan(x);
    }
};

const register_real_function<cot_op> registered;

}  // namespace

void define_cot() {}

}  // namespace qve
