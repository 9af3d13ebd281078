#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_cast<bit> registered;

}  // namespace

void define_bit() {}

}  // namespace qve
