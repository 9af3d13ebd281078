#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_cast<short> registered;

}  // namespace

void define_short() {}

}  // namespace qve
