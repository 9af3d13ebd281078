#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_index_cast<bigint> registered;

}  // namespace

void define_bigint() {}

}  // namespace qve
