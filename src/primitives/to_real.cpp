#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_cast<double> registered(L"to_real");

}  // namespace

void define_to_real() {}

}  // namespace qve
