#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_cast<float> registered;

}  // namespace

void define_float() {}

}  // namespace qve
