#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_index_cast<usht> registered;

}  // namespace

void define_usht() {}

}  // namespace qve
