#include <cmath>

#include "primitives/map_kernel.h"

namespace qve {
namespace {

struct atan2_op {
    static constexpr const wchar_t* name = L"atan2";

    template <class R, class A, class B>
    static R apply(A a, B b) {
        return std::atan2(static_cast<R>(a), static_cast<R>(b));
    }
};

template <class A, class B>
using atan2_sig = sig<std::conditional_t<std::is_same_v<A, float> && std::is_same_v<B, float>, float, double>, A, B>;

const register_maps<atan2_op, for_each_pair<atan2_sig, number_atoms>, modes2> registered;

}  // namespace

void define_atan2() {}

}  // namespace qve
