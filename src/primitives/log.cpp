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

const register_real_function<log_op> registered;

}  // namespace

void define_log() {}

}  // namespace qve
