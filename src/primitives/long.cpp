#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_cast<int> registered;

}  // namespace

void define_long() {}

}  // namespace qve
