#include <cmath>

#include "primitives/transcendental.h"

namespace qve {
namespace {

struct asin_op {
    static constexpr const wchar_t* name = L"asin";
    template <class T>
    static T of(T x) {
        return std::asin(x);
    }
};

const register_real_function<asin_op> registered;

}  // namespace

void define_asin() {}

}  // namespace qve
