#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_cast<double> registered;

}  // namespace

void define_double() {}

}  // namespace qve
