#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_cast<tiny> registered;

}  // namespace

void define_tiny() {}

}  // namespace qve
