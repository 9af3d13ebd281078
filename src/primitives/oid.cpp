#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_index_cast<oid> registered;

}  // namespace

void define_oid() {}

}  // namespace qve
