#include <cmath>

#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct power_op {
    static constexpr const wchar_t* name = L"power";

    template <class R, class A, class B>
    static R apply(A a, B b) {
        return std::pow(static_cast<double>(a), static_cast<double>(b));
    }
};

template <class A, class B>
using power_sig = sig<double, A, B>;

const register_maps<power_op, for_each_pair<power_sig, number_atoms>, modes2> registered;

}  // namespace

void define_power() {}

}  // namespace qve
