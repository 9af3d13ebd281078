#include <cmath>

#include "primitives/transcendental.h"

namespace qve {
namespace {

struct log_op {
    static constexpr const wchar_t* name = L"log";
    template <class T>
    static T of(T x) {
        return std::log10(x);
    }
};

// The logarithm to a base. Null where there is none: of 0 and less, and to a base of 1, 0 and less.
struct log_to_base_op {
    static constexpr const wchar_t* name = L"log";
    template <class R, class A, class B>
    static constexpr bool makes_nulls = true;

    template <class R, class A, class B>
    static R apply(A a, B b) {
        const double x = a;
        const double base = b;
        const bool defined = x > 0 && base > 0 && base != 1;
        if (!defined) return datatraits<R>::null;
        // These are exact for whole powers.
        if (base == 2) return std::log2(x);
        return base == 10 ? std::log10(x) : std::log(x) / std::log(base);
    }
};

template <class A, class B>
using double_of_two = sig<double, A, B>;

const register_real_function<log_op> registered;
const register_maps<log_to_base_op, for_each_pair<double_of_two, number_atoms>, modes2> registered_with_base;

}  // namespace

void define_log() {}

}  // namespace qve
