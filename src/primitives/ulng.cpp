#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_index_cast<ulng> registered;

}  // namespace

void define_ulng() {}

}  // namespace qve
